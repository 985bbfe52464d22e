// Module state and thread state.
#pragma once

#include <afx.h>

#include "ActCtx.h"
#include "MaintainState.h"
#include "ModuleState.h"
#include "ThreadState.h"
