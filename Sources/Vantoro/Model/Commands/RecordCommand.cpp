#include "Model/Commands/RecordCommand.h"

#include "Model/Live/Complaint.h"
#include "Model/Live/InterruptWatcher.h"
#include "Model/Recording/RecordingWriter.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <limits>
#include <QCoreApplication>
#include <QTimer>

namespace vantoro {

namespace {

constexpr int writeFault = 1;

UnixSeconds secondsSinceEpoch() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace

int recordThisMachine(const CommandLine& line, SensorHub& hub, std::chrono::milliseconds interval) {
    // From before the file is there: what was begun is finished.
    const InterruptWatcher interrupt([] { QCoreApplication::quit(); });
    RecordingWriter writer;
    Outcome<> outcome = writer.open(line.recordFile, hub.recordingHeader(secondsSinceEpoch()));
    const auto takeOne = [&] {
        Snapshot snapshot = hub.measure(secondsSinceEpoch());
        hub.addSingleReadings(snapshot);
        History::keepBusiest(snapshot.processes);
        outcome = writer.append(snapshot);
        if (outcome.failed())
            QCoreApplication::exit(writeFault);
    };
    if (!outcome.failed()) {
        hub.startProcesses();
        takeOne();
    }
    if (!outcome.failed()) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, takeOne);
        timer.start(interval);
        QTimer end;
        end.setSingleShot(true);
        QObject::connect(&end, &QTimer::timeout, &end, [] { QCoreApplication::quit(); });
        if (line.seconds && *line.seconds * 1e3 < std::numeric_limits<int>::max())
            end.start(std::chrono::milliseconds(std::llround(*line.seconds * 1e3)));
        QCoreApplication::exec();
    }
    if (!outcome.failed())
        outcome = writer.close();
    if (!outcome.failed())
        return EXIT_SUCCESS;
    complain(fmt::format("{}: {}", line.recordFile, outcome.fault()));
    return writeFault;
}

} // namespace vantoro
