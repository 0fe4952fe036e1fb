#pragma once

// The pull request detail layer's public surface: the detail model with its actions and merge
// gate, and the diff and Markdown line classifiers.

#include "diffparser.h"
#include "markdownlines.h"
#include "mergegate.h"
#include "prdetailviewmodel.h"
