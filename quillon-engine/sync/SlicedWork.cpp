#include "SlicedWork.h"

#include <QTimer>

namespace quillon {

void SlicedWork::run(Slice slice, std::function<void()> done)
{
    m_slice = std::move(slice);
    m_done = std::move(done);
    ++m_generation;
    post();
}

void SlicedWork::post()
{
    // From the event loop: whatever waits there, a client's call, goes first.
    QTimer::singleShot(0, this, [this, generation = m_generation] {
        if (generation == m_generation)
            next();
    });
}

void SlicedWork::next()
{
    if (!m_slice(QDeadlineTimer(kSliceMs, Qt::PreciseTimer)))
        return post();
    m_slice = {};
    // Done may start the next work on this same object.
    std::exchange(m_done, {})();
}

} // namespace quillon
