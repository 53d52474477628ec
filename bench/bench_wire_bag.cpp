// Decoding time of one bag with many names, as a client could send it to the daemon: framed,
// read back, checked and decoded. Each size runs five times; the median is printed.
#include "FrameReader.h"
#include "WireCodec.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

using namespace quillon;

namespace {
double decodeMs(int keys)
{
    auto bag = PropertyBag::create();
    for (int i = 0; i < keys; ++i)
        bag->setLong(QStringLiteral("Key%1").arg(i), i);
    const QByteArray bytes = WireCodec::requestFrame(1, QStringLiteral("SetSettings"), {bag});
    QList<double> runs;
    for (int run = 0; run < 5; ++run) {
        QElapsedTimer timer;
        timer.start();
        FrameReader reader;
        reader.append(bytes);
        const WireRequest request = WireCodec::readRequest(WireCodec::parsePayload(*reader.next()));
        if (std::get<BagPtr>(request.args.first())->size() != keys)
            std::abort();
        runs.append(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(runs.begin(), runs.end());
    return runs.at(2);
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    for (const int keys : {4000, 40000, 400000})
        std::printf("%7d names: %8.1f ms\n", keys, decodeMs(keys));
    return 0;
}
