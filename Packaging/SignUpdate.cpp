// Makes the keys that releases are signed with, signs an archive and writes its entry into the feed.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <sodium.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::string_view help = R"(Usage:
  sign-update make-keys KEYFILE [PUBLICKEYFILE]
      Writes a new private key into KEYFILE and the public one into PUBLICKEYFILE, and prints the public one. Neither may
      be there yet. Keep KEYFILE where nobody else reads it, and a copy of it: without it no installed copy takes an
      update any more.
  sign-update public-key KEYFILE
      Prints the public key; a program built with it (Packaging/update-public-key) takes what the private one signs.
  sign-update sign KEYFILE ARCHIVE
      Prints the signature over ARCHIVE and its length, as the attributes of an enclosure.
  sign-update entry KEYFILE ARCHIVE --version V --build B --url URL [--system S] [--minimum-system M] [--notes FILE]
                                    [--feed FILE]
      Prints the feed's entry for ARCHIVE, or puts it at the top of the feed FILE, which is made where it is missing.
      --system: linux-x86_64, linux-aarch64 or macos (the default); --minimum-system: the version of macOS, on Linux of
      the C library; --notes: what is new, HTML.
)";

using Key = std::array<unsigned char, crypto_sign_SECRETKEYBYTES>;
using Options = std::map<std::string, std::string>;

int fail(const std::string& reason) {
    fmt::print(stderr, "sign-update: {}\n", reason);
    return 1;
}

template <class Bytes>
std::string base64(const Bytes& bytes) {
    std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    ::sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), sodium_base64_VARIANT_ORIGINAL);
    text.pop_back(); // the zero at the end
    return text;
}

std::optional<std::string> fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return file.good();
}

Key keyOf(const std::array<unsigned char, crypto_sign_SEEDBYTES>& seed) {
    Key key = {};
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey = {};
    ::crypto_sign_seed_keypair(publicKey.data(), key.data(), seed.data());
    return key;
}

/// Of the seed in the file: 32 bytes in base64.
std::optional<Key> privateKey(const std::string& path) {
    std::string text = fileText(path).value_or("");
    text.erase(text.find_last_not_of(" \n\r\t") + 1);
    std::array<unsigned char, crypto_sign_SEEDBYTES> seed = {};
    std::size_t size = 0;
    if (::sodium_base642bin(seed.data(), seed.size(), text.data(), text.size(), nullptr, &size, nullptr,
                            sodium_base64_VARIANT_ORIGINAL) != 0 ||
        size != seed.size())
        return std::nullopt;
    return keyOf(seed);
}

std::string publicKeyOf(const Key& key) {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey = {};
    ::crypto_sign_ed25519_sk_to_pk(publicKey.data(), key.data());
    return base64(publicKey);
}

/// Why the file cannot be made with this text, or nothing. One that is there stays as it is; half of one does not stay.
std::optional<std::string> makeFile(const std::string& path, const std::string& text, mode_t mode) {
    const auto fault = [&path] { return fmt::format("{}: {}", path, std::strerror(errno)); };
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0)
        return fault();
    errno = ENOSPC; // what a write says that is merely short
    const bool isWritten =
        ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && ::fsync(file) == 0;
    std::optional<std::string> why = isWritten ? std::nullopt : std::optional(fault());
    if (::close(file) != 0 && !why)
        why = fault();
    if (why)
        ::unlink(path.c_str());
    return why;
}

int makeKeys(const std::string& path, const std::optional<std::string>& publicPath) {
    std::array<unsigned char, crypto_sign_SEEDBYTES> seed = {};
    ::randombytes_buf(seed.data(), seed.size());
    const std::string publicKey = publicKeyOf(keyOf(seed));
    if (const auto why = makeFile(path, base64(seed) + "\n", 0600))
        return fail(*why);
    if (publicPath)
        if (const auto why = makeFile(*publicPath, publicKey + "\n", 0644)) {
            // Nothing is signed with it yet.
            ::unlink(path.c_str());
            return fail(*why);
        }
    fmt::print("{}\n", publicKey);
    return 0;
}

std::string enclosureAttributes(const Key& key, const std::string& archive) {
    std::array<unsigned char, crypto_sign_BYTES> signature = {};
    ::crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const unsigned char*>(archive.data()),
                           archive.size(), key.data());
    return fmt::format("sparkle:edSignature=\"{}\" length=\"{}\"", base64(signature), archive.size());
}

std::string escaped(std::string_view text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

std::string entry(const Key& key, const std::string& archive, const Options& options, const std::string& notes) {
    const std::time_t now = std::time(nullptr);
    std::array<char, 64> date = {};
    std::strftime(date.data(), date.size(), "%a, %d %b %Y %H:%M:%S +0000", std::gmtime(&now));
    std::string text = fmt::format("    <item>\n      <title>{0}</title>\n      <pubDate>{1}</pubDate>\n"
                                   "      <sparkle:version>{2}</sparkle:version>\n"
                                   "      <sparkle:shortVersionString>{0}</sparkle:shortVersionString>\n",
                                   escaped(options.at("--version")), date.data(), escaped(options.at("--build")));
    if (options.contains("--minimum-system"))
        text += fmt::format("      <sparkle:minimumSystemVersion>{}</sparkle:minimumSystemVersion>\n",
                            escaped(options.at("--minimum-system")));
    if (!notes.empty())
        text += fmt::format("      <description>{}</description>\n", escaped(notes));
    const std::string system = options.contains("--system") ? options.at("--system") : "macos";
    text += fmt::format("      <enclosure url=\"{}\" {} sparkle:os=\"{}\" type=\"application/octet-stream\"/>\n"
                        "    </item>\n",
                        escaped(options.at("--url")), enclosureAttributes(key, archive), escaped(system));
    return text;
}

constexpr std::string_view emptyFeed = R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
  <channel>
    <title>Vantoro</title>
  </channel>
</rss>
)";

int putIntoFeed(const std::string& path, const std::string& item) {
    std::string feed = fileText(path).value_or(std::string(emptyFeed));
    std::size_t place = feed.find("    <item>");
    if (place == std::string::npos)
        place = feed.find("  </channel>");
    if (place == std::string::npos)
        return fail(path + ": not a feed of ours");
    feed.insert(place, item);
    // Whoever fetches the feed while it is written gets the old or the new one.
    const std::string next = path + ".new";
    if (!writeFile(next, feed) || std::rename(next.c_str(), path.c_str()) != 0)
        return fail(fmt::format("{}: {}", path, std::strerror(errno)));
    return 0;
}

int run(const std::vector<std::string>& words) {
    const std::string command = words.empty() ? "" : words[0];
    if (command == "--help" || command == "help") {
        fmt::print("{}", help);
        return 0;
    }
    if (command == "make-keys" && (words.size() == 2 || words.size() == 3))
        return makeKeys(words[1], words.size() == 3 ? std::optional(words[2]) : std::nullopt);
    const bool isEntry = command == "entry" && words.size() >= 3 && words.size() % 2 == 1;
    if (!(command == "public-key" && words.size() == 2) && !(command == "sign" && words.size() == 3) && !isEntry) {
        fmt::print(stderr, "{}", help);
        return 2;
    }
    const std::optional<Key> key = privateKey(words[1]);
    if (!key)
        return fail(words[1] + " holds no private key");
    if (command == "public-key") {
        fmt::print("{}\n", publicKeyOf(*key));
        return 0;
    }
    const std::optional<std::string> archive = fileText(words[2]);
    if (!archive || archive->empty())
        return fail(words[2] + " cannot be read");
    if (command == "sign") {
        fmt::print("{}\n", enclosureAttributes(*key, *archive));
        return 0;
    }
    constexpr std::array<std::string_view, 7> known{"--version",        "--build", "--url", "--system",
                                                    "--minimum-system", "--notes", "--feed"};
    Options options;
    for (std::size_t i = 3; i + 1 < words.size(); i += 2) {
        if (std::find(known.begin(), known.end(), words[i]) == known.end())
            return fail("unknown argument " + words[i]);
        options[words[i]] = words[i + 1];
    }
    for (const char* needed : {"--version", "--build", "--url"})
        if (!options.contains(needed))
            return fail(fmt::format("entry needs {}", needed));
    std::string notes;
    if (options.contains("--notes")) {
        const std::optional<std::string> text = fileText(options["--notes"]);
        if (!text)
            return fail(options["--notes"] + " cannot be read");
        notes = *text;
    }
    const std::string item = entry(*key, *archive, options, notes);
    if (options.contains("--feed"))
        return putIntoFeed(options["--feed"], item);
    fmt::print("{}", item);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (::sodium_init() < 0)
        return fail("libsodium does not start");
    return run(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
}
