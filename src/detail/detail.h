#pragma once

// The pull request detail layer's public surface.

#include "diffparser.h"
#include "markdownlines.h"
#include "mergegate.h"
