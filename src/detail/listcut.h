#pragma once

#include "giteaclient.h"

#include <QString>

namespace kestrine {

/// What a screen or kestrine-cli says under a list the page bound cut short, in the user's
/// language: "Showing the first 3000 of 3120." or, when the server gave no total, "Showing the
/// first 3000."
QString listCutNotice(const ListCut &cut);

} // namespace kestrine
