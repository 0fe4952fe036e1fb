#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace kestrine::testing {

/// Where the one file a benchmark looks for sits in a large diff.
struct NamedFile
{
    QByteArray name;
    /// How many hunks of 20 lines it has.
    int hunks = 3;
    /// How far into the diff it starts, as a share of the target size: 1 puts it last, so that
    /// cutting it out scans the whole text.
    double at = 1;
};

/// A unified diff of many files of 10 hunks each ("src/moduleN/source.cpp"), each hunk of 20
/// ~50-byte lines, about `targetBytes` long, with `named` where it says.
QByteArray largeDiff(qsizetype targetBytes, const NamedFile &named);

/// A job log of `targetBytes` with timestamps, groups and ANSI colour codes, as Actions writes it.
QByteArray largeLog(qsizetype targetBytes);

} // namespace kestrine::testing
