#pragma once

// The pull request detail layer's public surface: the detail model with its actions, merge gate
// and list models, the diff and job log models, and the Markdown line classifier.

#include "changedfilemark.h"
#include "detaillistmodels.h"
#include "diffmodel.h"
#include "diffparser.h"
#include "joblogmodel.h"
#include "listcut.h"
#include "markdownlines.h"
#include "mergegate.h"
#include "notconfigured.h"
#include "prdetailviewmodel.h"
#include "recordlistmodel.h"
