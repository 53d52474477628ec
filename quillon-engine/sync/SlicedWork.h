#pragma once

#include <QDeadlineTimer>
#include <QObject>

#include <functional>
#include <utility>

namespace quillon {

// Long work on the event loop a few milliseconds at a time, so the thread answers its clients
// between two slices. Destroying it drops whatever is left, done included.
class SlicedWork : public QObject
{
    Q_OBJECT
public:
    // Does what fits before the deadline (at least one piece, so work always moves on) and
    // answers true once nothing is left. It must not throw: the event loop calls it.
    using Slice = std::function<bool(const QDeadlineTimer &deadline)>;

    static constexpr int kSliceMs = 1;

    // Replaces any work under way; done runs after the last slice.
    void run(Slice slice, std::function<void()> done);

private:
    void post();
    void next();

    Slice m_slice;
    std::function<void()> m_done;
    int m_generation = 0;
};

} // namespace quillon
