// Many installers start every program hidden. The system applies that wish to the first window that the
// program shows, which here would be the dialog that the user is to see.
#pragma once

// Lets the wish come true for a window that nobody misses.
void SpendFirstShow();
