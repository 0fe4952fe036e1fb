#pragma once

// Public interface of the settings and diagnostics layer.
#include "defaultsstore.h"
#include "logstore.h"
