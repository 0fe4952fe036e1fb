#pragma once

// The API layer's public surface: records and their JSON mapping, the client and its errors.

#include "apierror.h"
#include "dates.h"
#include "giteaclient.h"
#include "httpsession.h"
#include "jsoncodec.h"
#include "logsink.h"
#include "records.h"
#include "weblinks.h"
