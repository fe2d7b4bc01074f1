// Downloads an archive into a private file, from where an earlier attempt stopped.
#pragma once

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Updates/UpdateRequest.h"

#include <chrono>
#include <QTimer>

namespace vantoro {

/// Whom a download tells, on the main thread.
struct DownloadListener {
    /// Bytes that have come since the last call; what an earlier attempt left counts in the first one.
    std::function<void(std::uint64_t bytes)> received;
    /// The server sends it from the start after all.
    std::function<void()> startedOver;
    /// Once, at the end: nothing went wrong, or what did. The file holds exactly the length asked for where nothing
    /// did.
    std::function<void(const Outcome<UpdateError>& outcome)> finished;
};

/// How long a download may take, however little comes of it: what came is kept for the next one.
struct DownloadLimits {
    std::chrono::milliseconds altogether = std::chrono::hours(1);
    /// In each span of that length at least so many bytes.
    std::chrono::milliseconds span = std::chrono::minutes(1);
    std::uint64_t leastBytes = 16 * 1024;
};

/// One download; ending it early leaves what came for the next one. A connection that breaks
/// is taken up again where it brought anything, up to five times. More or less than the length asked for is refused and
/// thrown away.
class ArchiveDownload : public QObject {
    Q_OBJECT
public:
    ArchiveDownload(UpdateRequests& requests, QUrl url, std::uint64_t length, std::string path,
                    DownloadListener listener, DownloadLimits limits = {});
    ~ArchiveDownload() override;

    void start();
    /// Ends it without a word, also from within its own telling.
    void cancel();

private:
    void request();
    void judgePace();
    void judgeHeaders();
    void read();
    void ended();
    void stop();
    void finish(const Outcome<UpdateError>& outcome);
    /// Throws away what came: it can be no part of the archive.
    void refuse(const std::string& why);
    bool startOver();

    UpdateRequests& requests_;
    QUrl url_;
    std::uint64_t length_;
    std::string path_;
    DownloadListener listener_;
    DownloadLimits limits_;
    QTimer deadline_;
    QTimer pace_;
    /// All that came until the span that runs began.
    std::uint64_t paced_ = 0;
    std::uint64_t came_ = 0;
    Descriptor file_;
    std::unique_ptr<QNetworkReply> reply_;
    std::uint64_t received_ = 0;
    std::uint64_t receivedBefore_ = 0;
    bool isJudged_ = false;
    bool isCancelled_ = false;
    int resumptions_ = 0;
    /// In a row, without a byte that was missing.
    int fruitlessAttempts_ = 0;
};

} // namespace vantoro
