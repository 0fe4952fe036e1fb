#pragma once

#include <QCoreApplication>
#include <QString>

namespace kestrine {

/// What the diff and job log screens say when the settings yield no client; kestrine-cli's diff
/// and job-log say the same.
inline QString notConfiguredMessage()
{
    return QCoreApplication::translate("NotConfigured", "Not configured.");
}

} // namespace kestrine
