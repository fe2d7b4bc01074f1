// Feeds, manifests and archives with bytes changed at random: read or refused, never more.
#include "Platform/Linux/KeptFile.h"
#include "Platform/Linux/Updates/Appcast.h"
#include "Platform/Linux/Updates/ArchiveUnpacker.h"
#include "Platform/Linux/Updates/InstalledCopy.h"
#include "Support/Folders.h"
#include "Updates/ReleaseMaker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>

namespace vantoro {
namespace {

/// A few bytes changed, cut out or doubled; the same for the same seed.
QByteArray mutated(QByteArray bytes, unsigned seed) {
    std::mt19937 random(seed);
    for (unsigned i = 0; i < 1 + seed % 4 && !bytes.isEmpty(); ++i) {
        const auto place = static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()));
        const auto length = static_cast<qsizetype>(random() % 40);
        switch (random() % 4) {
        case 0:
            bytes[place] = static_cast<char>(random());
            break;
        case 1:
            bytes.remove(place, length);
            break;
        case 2:
            bytes.insert(place, bytes.mid(place, length));
            break;
        default:
            bytes[place] = "<>&\"'/-]0\n"[random() % 10];
        }
    }
    return bytes;
}

std::optional<std::string> unpacked(const QByteArray& bytes, const std::string& folder) {
    const test::TemporaryFolder beside;
    beside.write("archive", bytes.toStdString());
    const Descriptor file(::open((beside.path() + "/archive").c_str(), O_RDONLY | O_CLOEXEC));
    const auto fault = unpackArchive(file.number(), folder, nullptr, {.bytes = 1'000'000, .entries = 50});
    return fault ? std::optional(fault->text) : std::nullopt;
}

TEST(HostileInput, FeedsAndManifests) {
    const QUrl address("https://updates.vantoro.example/appcast.xml");
    const QByteArray feed =
        testing::feedOf({{.version = "2.0", .build = "200", .url = "a.tar.gz", .length = 5, .signature = "c2ln"},
                         {.version = "3.0", .build = "300", .url = "../b", .minimumSystem = "9", .notes = "<p>&"}});
    ASSERT_EQ(parseAppcast(feed, address)->size(), 2U);
    EXPECT_EQ(parseAppcast(feed, address)->at(0).archive, QUrl("https://updates.vantoro.example/a.tar.gz"));
    const auto manifest = QByteArray::fromStdString(testing::release("2.0", "200").back().content);
    ASSERT_TRUE(parseManifest(manifest.toStdString()));
    int readFeeds = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        if (const auto entries = parseAppcast(mutated(feed, seed), address)) {
            ++readFeeds;
            chooseUpdate(*entries, "100", testing::thisSystem(), "2.36");
        }
        (void)parseManifest(mutated(manifest, seed).toStdString());
    }
    EXPECT_GT(readFeeds, 100);
    EXPECT_LT(readFeeds, 3000);
}

TEST(HostileInput, NestingAndRepetitionWithoutEnd) {
    QByteArray deep = "<rss>";
    QByteArray many = "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>";
    for (int i = 0; i < 50'000; ++i) {
        deep += "<item>";
        many += "<item><sparkle:version>1</sparkle:version></item>";
    }
    EXPECT_FALSE(parseAppcast(deep, {}));
    EXPECT_EQ(parseAppcast(many + "</channel></rss>", {})->size(), 1000U);
}

TEST(HostileInput, Archives) {
    const test::TemporaryFolder folder;
    // Plain tar within gzip: changes to what is packed, not only to the packing.
    const QByteArray archive = testing::archiveOf({{.path = "V/bin/x", .content = std::string(3000, 'x')},
                                                   {.path = "V/../../out", .content = "out"},
                                                   {.path = "V/share/y", .content = "y"}});
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::filesystem::create_directory(folder.path() + "/in");
        (void)unpacked(mutated(archive, seed), folder.path() + "/in");
        folder.remove("in");
        ASSERT_TRUE(std::filesystem::is_empty(folder.path())) << seed;
    }
    // What unpacks to more than it may.
    std::filesystem::create_directory(folder.path() + "/in");
    EXPECT_EQ(unpacked(testing::archiveOf({{.path = "V/zeros", .content = std::string(30'000'000, '\0')}}),
                       folder.path() + "/in"),
              "the archive holds too much");
    EXPECT_LE(std::filesystem::file_size(folder.path() + "/in/zeros"), 1'000'000U);
}

} // namespace
} // namespace vantoro
