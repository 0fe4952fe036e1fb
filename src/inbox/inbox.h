#pragma once

// The inbox layer's public surface.

#include "summaries.h"
