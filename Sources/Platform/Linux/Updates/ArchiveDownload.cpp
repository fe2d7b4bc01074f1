#include "Platform/Linux/Updates/ArchiveDownload.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <QTimer>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

constexpr int mostResumptions = 20;
constexpr int mostFruitlessAttempts = 3;
constexpr int pauseMilliseconds = 500;
constexpr int partialContent = 206;
constexpr int rangeNotSatisfiable = 416;

/// Opens the file for this user alone. None, with errno, when it cannot be or something else than a plain file of the
/// user's own lies there.
Descriptor openPrivately(const std::string& path) {
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    struct stat status = {};
    if (!file || ::fstat(file.number(), &status) != 0)
        return {};
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid() || status.st_nlink != 1) {
        errno = EEXIST;
        return {};
    }
    return ::fchmod(file.number(), 0600) == 0 ? std::move(file) : Descriptor();
}

/// A write that the disk has no more room for is a short one first.
bool writeAt(int file, const char* bytes, std::size_t size, std::uint64_t place) {
    while (size > 0) {
        const ssize_t written = ::pwrite(file, bytes, size, static_cast<off_t>(place));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
        place += static_cast<std::uint64_t>(written);
    }
    return true;
}

} // namespace

ArchiveDownload::ArchiveDownload(UpdateRequests& requests, QUrl url, std::uint64_t length, std::string path,
                                 DownloadListener listener, DownloadLimits limits)
    : requests_(requests)
    , url_(std::move(url))
    , length_(length)
    , path_(std::move(path))
    , listener_(std::move(listener))
    , limits_(limits) {
    deadline_.setSingleShot(true);
    connect(&deadline_, &QTimer::timeout, this,
            [this] { finish(sparkleError(SparkleCode::download, "the archive took too long")); });
    connect(&pace_, &QTimer::timeout, this, &ArchiveDownload::judgePace);
}

ArchiveDownload::~ArchiveDownload() {
    stop();
}

void ArchiveDownload::cancel() {
    isCancelled_ = true;
    deadline_.stop();
    pace_.stop();
    stop();
}

void ArchiveDownload::start() {
    deadline_.start(limits_.altogether);
    pace_.start(limits_.span);
    // Nobody is told before this returns.
    QTimer::singleShot(0, this, [this] {
        if (isCancelled_)
            return;
        file_ = openPrivately(path_);
        if (!file_) {
            finish(fileError(SparkleCode::installationWriteNoPermission, path_, errno));
            return;
        }
        const off_t size = ::lseek(file_.number(), 0, SEEK_END);
        received_ = size > 0 ? static_cast<std::uint64_t>(size) : 0;
        if (received_ > length_ && !startOver())
            return;
        if (received_ > 0)
            listener_.received(received_);
        if (received_ == length_)
            finish({});
        else
            request();
    });
}

void ArchiveDownload::judgePace() {
    if (came_ - std::exchange(paced_, came_) < limits_.leastBytes)
        finish(sparkleError(SparkleCode::download, "the archive comes too slowly"));
}

void ArchiveDownload::request() {
    if (isCancelled_)
        return;
    stop();
    isJudged_ = false;
    receivedBefore_ = received_;
    reply_ = requests_.get(url_, static_cast<qint64>(received_));
    if (!reply_) {
        finish(sparkleError(SparkleCode::download, "the archive's address is not https"));
        return;
    }
    connect(reply_.get(), &QNetworkReply::readyRead, this, &ArchiveDownload::read);
    connect(reply_.get(), &QNetworkReply::finished, this, &ArchiveDownload::ended);
}

void ArchiveDownload::judgeHeaders() {
    const int status = httpStatus(*reply_);
    if (isJudged_ || status == 0)
        return;
    isJudged_ = true;
    if (status == rangeNotSatisfiable && received_ > 0) {
        if (startOver())
            request();
        return;
    }
    if (status != 200 && status != partialContent) {
        finish(sparkleError(SparkleCode::download, fmt::format("the server answers {}", status)));
        return;
    }
    const auto expectedStart = fmt::format("bytes {}-", received_);
    const bool goesOn = status == partialContent &&
                        reply_->rawHeader("Content-Range").startsWith(QByteArray::fromStdString(expectedStart));
    if (status == partialContent && !goesOn) {
        refuse("the server sends another part than was asked for");
        return;
    }
    if (!goesOn && received_ > 0 && !startOver())
        return;
    const QVariant size = reply_->header(QNetworkRequest::ContentLengthHeader);
    if (size.isValid() && size.toULongLong() + received_ != length_)
        refuse(fmt::format("the server has {} bytes, not {}", size.toULongLong() + received_, length_));
}

void ArchiveDownload::read() {
    std::array<char, 64 * 1024> block;
    while (reply_) {
        judgeHeaders();
        if (!reply_ || !isJudged_)
            return;
        const qint64 size = reply_->read(block.data(), block.size());
        if (size <= 0)
            return;
        if (received_ + static_cast<std::uint64_t>(size) > length_) {
            refuse("the server sends more than was announced");
            return;
        }
        if (!writeAt(file_.number(), block.data(), static_cast<std::size_t>(size), received_)) {
            const UpdateError error = fileError(SparkleCode::temporaryDirectory, path_, errno);
            // What came takes room that is needed.
            ::unlink(path_.c_str());
            file_ = {};
            finish(error);
            return;
        }
        received_ += static_cast<std::uint64_t>(size);
        came_ += static_cast<std::uint64_t>(size);
        listener_.received(static_cast<std::uint64_t>(size));
    }
}

void ArchiveDownload::ended() {
    read();
    if (!reply_)
        return;
    if (received_ == length_) {
        finish({});
        return;
    }
    const bool isFruitless = received_ <= receivedBefore_;
    fruitlessAttempts_ = isFruitless ? fruitlessAttempts_ + 1 : 0;
    if (fruitlessAttempts_ < mostFruitlessAttempts && ++resumptions_ <= mostResumptions) {
        QTimer::singleShot(isFruitless ? pauseMilliseconds : 0, this, &ArchiveDownload::request);
    } else if (reply_->error() != QNetworkReply::NoError) {
        finish(requestError(*reply_, SparkleCode::download));
    } else {
        finish(sparkleError(SparkleCode::download, "the connection ended early"));
    }
}

void ArchiveDownload::stop() {
    if (!reply_)
        return;
    reply_->disconnect(this);
    reply_->abort();
    // It may be the one that is telling.
    reply_.release()->deleteLater();
}

bool ArchiveDownload::startOver() {
    received_ = 0;
    if (::ftruncate(file_.number(), 0) != 0) {
        finish(fileError(SparkleCode::temporaryDirectory, path_, errno));
        return false;
    }
    listener_.startedOver();
    return true;
}

void ArchiveDownload::refuse(const std::string& why) {
    ::unlink(path_.c_str());
    finish(sparkleError(SparkleCode::validation, why));
}

void ArchiveDownload::finish(const Outcome<UpdateError>& outcome) {
    cancel();
    if (outcome.failed() && file_ && received_ == 0)
        ::unlink(path_.c_str());
    // Whoever is told may destroy this.
    if (const auto finished = std::exchange(listener_.finished, nullptr))
        finished(outcome);
}

} // namespace vantoro
