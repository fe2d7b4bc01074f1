// A recording in place of the machine: its snapshots reach the hub at the pace at which they were recorded.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Model/Recording/RecordingFile.h"

#include <optional>
#include <QObject>
#include <QTimer>
#include <string>

namespace vantoro {

class Replay : public QObject {
    Q_OBJECT
public:
    /// Reads the whole recording once, so that one that cannot be used is refused before anything is shown; a pipe,
    /// which could not be read again, is refused too. The hub must outlive the replay.
    Replay(SensorHub& hub, const std::string& path);

    /// Why it cannot be played.
    const std::optional<RecordingNotice>& error() const { return result_.error; }
    /// What is left out of it.
    const std::optional<RecordingNotice>& warning() const { return result_.warning; }
    const RecordingHeader& header() const { return result_.header; }

    /// Hands over the first snapshot at once and the others in their time; after the last one the hub stays as it is.
    void start();
    /// Hands over all that is left, at once.
    void finish();

signals:
    void finished();

private:
    void takeNext();

    SensorHub& hub_;
    RecordingResult result_;
    std::optional<RecordingReader> reader_;
    std::optional<Snapshot> next_;
    QTimer timer_;
};

} // namespace vantoro
