// Module state and thread state.
#pragma once

#include <afx.h>

#include "framework/modules/ActCtx.h"
#include "framework/modules/MaintainState.h"
#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"
