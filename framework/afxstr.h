// The string classes.
#pragma once

#include "framework/text/CString.h"

#include "framework/text/CFixedString.h"
