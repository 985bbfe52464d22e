// The string classes.
#pragma once

#include "CString.h"

#include "CFixedString.h"
