#pragma once

#include <QThreadPool>

namespace kestrine {

/// A pool of exactly one thread, for long work that must stay off the main thread: jobs run one
/// after another in the order they were started, and a static one waits for the job under way
/// when the program ends.
///
/// Not Qt's global pool: the raster paint engine of Qt 6.4 splits large fills over that pool and
/// waits for them on the main thread, so long work there would hold up drawing.
class WorkerThread : public QThreadPool
{
public:
    WorkerThread() { setMaxThreadCount(1); }
};

} // namespace kestrine
