#pragma once

// The inbox layer's public surface.

#include "cachedirectory.h"
#include "inboxcache.h"
#include "inboxsearch.h"
#include "inboxviewmodel.h"
#include "notificationpass.h"
#include "prrow.h"
#include "pullrequestreference.h"
#include "repositoryselection.h"
#include "summaries.h"
