// Makes releases as a maintainer does, and such as no maintainer would.
#pragma once

#include <optional>
#include <QByteArray>
#include <string>
#include <vector>

namespace vantoro::testing {

/// One entry of an archive.
struct ArchiveItem {
    std::string path;
    std::string content;
    int mode = 0644;
    /// A symbolic link to this; empty for a file.
    std::string link = {};
    bool isHardLink = false;
};

QByteArray archiveOf(const std::vector<ArchiveItem>& items);

/// bin/vantoro (a script that says its version), a data file, and the manifest that names them.
std::vector<ArchiveItem> release(const std::string& version, const std::string& build);

/// A pair for signing.
class SigningKey {
public:
    SigningKey();
    std::string publicKey() const;
    std::string signatureOver(const QByteArray& archive) const;

private:
    std::string secret_;
};

/// One entry of a feed.
struct FeedItem {
    std::string version;
    std::string build;
    std::string url;
    std::uint64_t length = 0;
    std::string signature;
    std::string system = {};
    std::string minimumSystem = {};
    std::string notes = {};
};

QByteArray feedOf(const std::vector<FeedItem>& items);
/// What the feed calls this machine's kind.
std::string thisSystem();

} // namespace vantoro::testing
