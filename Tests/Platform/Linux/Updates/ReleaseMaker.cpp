#include "Platform/Linux/Updates/ReleaseMaker.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>
#include <memory>
#include <QString>
#include <sodium.h>
#include <sys/utsname.h>

namespace vantoro::testing {

namespace {

std::string base64(const unsigned char* bytes, std::size_t size) {
    std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
    ::sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
    text.pop_back();
    return text;
}

std::string xml(const std::string& text) {
    return QString::fromStdString(text).toHtmlEscaped().toStdString();
}

} // namespace

QByteArray archiveOf(const std::vector<ArchiveItem>& items) {
    std::string bytes(64 * 1024 * 1024, '\0');
    std::size_t used = 0;
    const std::unique_ptr<archive, decltype(&archive_write_free)> writer(archive_write_new(), archive_write_free);
    archive_write_set_format_pax_restricted(writer.get());
    archive_write_add_filter_gzip(writer.get());
    archive_write_open_memory(writer.get(), bytes.data(), bytes.size(), &used);
    for (const ArchiveItem& item : items) {
        const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                                  archive_entry_free);
        archive_entry_set_pathname(entry.get(), item.path.c_str());
        archive_entry_set_perm(entry.get(), static_cast<unsigned>(item.mode));
        archive_entry_set_filetype(entry.get(), item.link.empty() ? AE_IFREG : AE_IFLNK);
        if (item.isHardLink)
            archive_entry_set_hardlink(entry.get(), item.link.c_str());
        else if (!item.link.empty())
            archive_entry_set_symlink(entry.get(), item.link.c_str());
        else
            archive_entry_set_size(entry.get(), static_cast<la_int64_t>(item.content.size()));
        archive_write_header(writer.get(), entry.get());
        archive_write_data(writer.get(), item.content.data(), item.content.size());
    }
    archive_write_close(writer.get());
    return {bytes.data(), static_cast<qsizetype>(used)};
}

std::vector<ArchiveItem> release(const std::string& version, const std::string& build) {
    const std::string top = "Vantoro-" + version + "/";
    // As long as a real one, and as hard to compress.
    std::string data;
    for (unsigned i = 0, state = 1; i < 400'000; ++i)
        data += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return {
        {.path = top + "bin/vantoro", .content = fmt::format("#!/bin/sh\necho vantoro {}\n", version), .mode = 04755},
        {.path = top + "share/vantoro/data", .content = data, .mode = 0666},
        {.path = top + "share/vantoro/manifest.json",
         .content = fmt::format(R"({{"name":"Vantoro","version":"{}","build":"{}",)"
                                R"("files":["share/vantoro/data","bin/vantoro"]}})",
                                version, build)}};
}

SigningKey::SigningKey() : secret_(crypto_sign_SECRETKEYBYTES, '\0') {
    std::string publicKey(crypto_sign_PUBLICKEYBYTES, '\0');
    ::crypto_sign_keypair(reinterpret_cast<unsigned char*>(publicKey.data()),
                          reinterpret_cast<unsigned char*>(secret_.data()));
}

std::string SigningKey::publicKey() const {
    std::string key(crypto_sign_PUBLICKEYBYTES, '\0');
    ::crypto_sign_ed25519_sk_to_pk(reinterpret_cast<unsigned char*>(key.data()),
                                   reinterpret_cast<const unsigned char*>(secret_.data()));
    return base64(reinterpret_cast<const unsigned char*>(key.data()), key.size());
}

std::string SigningKey::signatureOver(const QByteArray& archive) const {
    std::string signature(crypto_sign_BYTES, '\0');
    ::crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                           reinterpret_cast<const unsigned char*>(archive.data()),
                           static_cast<unsigned long long>(archive.size()),
                           reinterpret_cast<const unsigned char*>(secret_.data()));
    return base64(reinterpret_cast<const unsigned char*>(signature.data()), signature.size());
}

QByteArray feedOf(const std::vector<FeedItem>& items) {
    std::string text = "<?xml version=\"1.0\"?>\n<rss version=\"2.0\" "
                       "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>";
    for (const FeedItem& item : items) {
        text += fmt::format("<item><title>x</title><sparkle:version>{}</sparkle:version>"
                            "<sparkle:shortVersionString>{}</sparkle:shortVersionString>",
                            xml(item.build), xml(item.version));
        if (!item.minimumSystem.empty())
            text += fmt::format("<sparkle:minimumSystemVersion>{}</sparkle:minimumSystemVersion>", item.minimumSystem);
        text +=
            fmt::format("<description>{}</description><enclosure url=\"{}\" length=\"{}\" sparkle:os=\"{}\"",
                        xml(item.notes), xml(item.url), item.length, item.system.empty() ? thisSystem() : item.system);
        if (!item.signature.empty())
            text += fmt::format(" sparkle:edSignature=\"{}\"", item.signature);
        text += "/></item>";
    }
    return QByteArray::fromStdString(text + "</channel></rss>");
}

std::string thisSystem() {
    struct utsname names = {};
    ::uname(&names);
    return std::string("linux-") + names.machine;
}

} // namespace vantoro::testing
