#pragma once

// Reads a seed document (its format is described in giteasimulation.h) into the simulation's
// state, checking what it references: unknown users, malformed dates and unknown status words
// are errors, never silently dropped.

#include "giteastate.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace kestrine::sim {

struct SeedResult
{
    std::optional<State> state;
    /// Why the seed was refused, e.g. `repositories[1].pulls[0]: unknown user "zed"`.
    QString error;
};

SeedResult readSeed(const QByteArray &json);

} // namespace kestrine::sim
