#pragma once

#include <QFutureWatcher>
#include <QObject>
#include <QtConcurrent>

#include <atomic>
#include <memory>
#include <utility>

// Work on the thread pool whose result reaches the main thread only if nothing replaced it
// meanwhile: a later start(), or supersede() when the state it was worked out from changed. The
// work is handed a flag that turns true once it is replaced, so a long run can stop early; its
// result then goes nowhere. The decision is taken on the receiver's thread, just before the
// result would be handed over, so a replaced run can never publish.
template<typename T> class LatestRun
{
public:
    explicit LatestRun(QObject *receiver) : m_receiver(receiver) { }
    ~LatestRun() { supersede(); }
    LatestRun(const LatestRun &) = delete;
    LatestRun &operator=(const LatestRun &) = delete;

    // Replaces the run under way. `work(const std::atomic_bool &replaced)` runs on the pool and
    // returns a T; `publish(T)` is then called on the receiver's thread, unless replaced.
    template<typename Work, typename Publish> void start(Work work, Publish publish)
    {
        supersede();
        const auto replaced = std::make_shared<std::atomic_bool>(false);
        m_replaced = replaced;
        auto *watcher = new QFutureWatcher<T>(m_receiver);
        QObject::connect(watcher, &QFutureWatcherBase::finished, m_receiver,
                         [this, watcher, replaced, publish = std::move(publish)] {
                             watcher->deleteLater();
                             if (*replaced)
                                 return;
                             m_replaced.reset();
                             publish(watcher->result());
                         });
        watcher->setFuture(QtConcurrent::run(
            [work = std::move(work), replaced] { return work(std::as_const(*replaced)); }));
    }

    // The run under way, if any, publishes nothing.
    void supersede()
    {
        if (m_replaced)
            *std::exchange(m_replaced, nullptr) = true;
    }

    // A run was started and has neither published nor been replaced.
    bool isRunning() const { return m_replaced != nullptr; }

private:
    QObject *m_receiver;
    // Shared with the run under way, which may outlive this object.
    std::shared_ptr<std::atomic_bool> m_replaced;
};
