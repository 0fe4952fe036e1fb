#pragma once

// Public interface of the settings and diagnostics layer.
#include "defaultsstore.h"
#include "keychainhelper.h"
#include "logstore.h"
#include "qmlservices.h"
#include "settingsstore.h"
#include "storagemode.h"
#include "terminationsignal.h"
