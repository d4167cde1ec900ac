#pragma once

#include <QThread>
#include <QThreadPool>

#include <algorithm>

// A pool that, together with the thread that hands it work and then waits, keeps every core busy.
class WorkerPool : public QThreadPool
{
public:
    WorkerPool() { setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1)); }
};
