// A disk without room, which only those who may mount one can make: see full_disk_test.sh.
//
// What does not fit ends differently: Wine writes the part that fits and reports success, Windows fails with
// "disk full". Both are tried everywhere, with functions that stand in for the system's.
#pragma once

constexpr char kNoFullDisk[] =
    "no full disk here; a short write, as Wine reports it, and a failing one, as Windows does, "
    "are tried by tests of their own";
