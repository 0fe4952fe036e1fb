#include "storagemode.h"

#include <QTemporaryDir>
#include <memory>

namespace kestrine::Storage {
namespace {

struct State
{
    bool defaultsOpened = false;
    // Created by useEphemeral(); removed with its contents when the process exits.
    std::unique_ptr<QTemporaryDir> directory;
};

State &state()
{
    static State instance;
    return instance;
}

} // namespace

bool useEphemeral()
{
    State &s = state();
    if (s.directory)
        return true;
    if (s.defaultsOpened)
        return false;
    auto directory = std::make_unique<QTemporaryDir>();
    if (!directory->isValid())
        return false;
    s.directory = std::move(directory);
    return true;
}

bool isEphemeral()
{
    return state().directory != nullptr;
}

QString ephemeralDirectory()
{
    const State &s = state();
    return s.directory ? s.directory->path() : QString();
}

void markDefaultsOpened()
{
    state().defaultsOpened = true;
}

} // namespace kestrine::Storage
