#pragma once

// The background layer's public surface: the notification check, its state, and the platform
// services it runs on.

#include "appdelegate.h"
#include "backgroundscheduler.h"
#include "notificationcenter.h"
#include "notificationservice.h"
#include "notificationstate.h"
