#pragma once

#include <QSettings>

namespace kestrine {

/// The JSON file format of the defaults store, registered with QSettings on first call. Values keep
/// their JSON types across a round trip (bool, string, string list, integer, double, map), which
/// QSettings' INI format does not do: there "true" and a one-element list come back as strings.
/// Byte arrays are written as {"$data": "<base64>"} and read back as QByteArray.
QSettings::Format jsonSettingsFormat();

/// The app's user defaults: ~/.config/norrum/kestrine.json (under XDG_CONFIG_HOME), one flat JSON
/// object keyed by setting name; in ephemeral storage mode (storagemode.h) a file of the same form
/// in the private temporary folder instead. Created on first use, lives until exit; main thread
/// only.
QSettings &defaultsStore();

} // namespace kestrine
