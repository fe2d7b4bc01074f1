// Feeds, manifests and archives with bytes changed at random: read or refused, never more.
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Updates/Appcast.h"
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/Linux/Updates/Preparation/ReleasePreparation.h"
#include "Platform/Linux/Updates/ReleaseMaker.h"
#include "Support/Folders.h"

#include <fcntl.h>
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
    const testing::TemporaryFolder beside;
    beside.write("archive", bytes.toStdString());
    const Descriptor file(::open((beside.path() + "/archive").c_str(), O_RDONLY | O_CLOEXEC));
    const auto outcome = unpackArchive(file.number(), folder, nullptr, {.bytes = 1'000'000, .entries = 50});
    return outcome.failed() ? std::optional(outcome.fault().text) : std::nullopt;
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

/// A feed of one item, with this beside its version.
QByteArray feedWith(const QByteArray& extra) {
    return "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><item>"
           "<sparkle:version>200</sparkle:version>" +
           extra + "</item></channel></rss>";
}

QByteArray attributes(int count) {
    QByteArray element = "<x";
    for (int i = 0; i < count; ++i)
        element += " a" + QByteArray::number(i) + "=\"\"";
    return element + "/>";
}

TEST(HostileInput, FeedsHaveNoReasonToBeLarge) {
    struct Case {
        const char* what;
        QByteArray feed;
        bool isRead;
    };
    const QByteArray quoted = "<x a='" + QByteArray("b=&lt;\"c\" >").repeated(100) + "'/>";
    for (const Case& one :
         {Case{"attributes for a minute's reading", feedWith(attributes(30'000)), false},
          Case{"some attributes too many, after a '>' in a text", feedWith("<y z='>'/>" + attributes(40)), false},
          Case{"as many as an element may have", feedWith(attributes(30)), true},
          Case{"what looks like attributes in a text", feedWith(quoted + "<![CDATA[" + attributes(900) + "]]>"), true},
          Case{"the same in a comment", feedWith("<!-- " + attributes(900) + " -->"), true},
          Case{"nested without end", "<rss>" + QByteArray("<item>").repeated(40'000), false},
          Case{"nested and closed", feedWith(QByteArray("<x>").repeated(100) + QByteArray("</x>").repeated(100)),
               false},
          Case{"more elements than releases have", feedWith(QByteArray("<x/>").repeated(20'000)), false},
          Case{"many elements", feedWith(QByteArray("<x/>").repeated(2'000)), true},
          Case{"just too large", feedWith(QByteArray(256 * 1024, ' ')), false},
          Case{"large", feedWith(QByteArray(200 * 1024, ' ')), true},
          Case{"another encoding", QByteArray("\xFE\xFF\0<\0r\0s\0s\0/\0>", 14), false},
          Case{"one that is only claimed", "<?xml version=\"1.0\" encoding=\"utf-16\"?>" + feedWith(""), true},
          Case{"a document type", "<!DOCTYPE x [<!ENTITY a 'b'>]>" + feedWith(""), false},
          Case{"not closed", "<rss><channel><item>", false}})
        EXPECT_EQ(parseAppcast(one.feed, {}).has_value(), one.isRead) << one.what;
}

TEST(HostileInput, WhichEntriesAreOffered) {
    const auto offered = [](const QByteArray& extra) {
        const auto entries = parseAppcast(feedWith(extra), QUrl("https://updates.vantoro.example/appcast.xml"));
        return chooseUpdate(*entries, "100", "linux-x86_64", "2.36").update;
    };
    const QByteArray archive = "<enclosure url=\"a.tar.gz\" length=\"5\" sparkle:os=\"linux-x86_64\"/>";
    EXPECT_TRUE(offered(archive));
    EXPECT_FALSE(offered(archive)->item.isInformationOnlyUpdate);
    EXPECT_FALSE(offered("<sparkle:channel>beta</sparkle:channel>" + archive)) << "nobody asked for it";
    EXPECT_TRUE(offered("<sparkle:channel/>" + archive));
    EXPECT_FALSE(offered("<enclosure url=\"a\" sparkle:os=\"macos\"/><link>https://b/</link>")) << "for a Mac";
    EXPECT_FALSE(offered("<enclosure url=\"" + QByteArray(3000, 'a') + "\"/>"));
    for (const QByteArray& information :
         {QByteArray("<link>https://b/</link>"), "<sparkle:informationalUpdate/>" + archive,
          "<sparkle:informationalUpdate><sparkle:version>100</sparkle:version></sparkle:informationalUpdate>" +
              archive}) {
        const auto entry = offered(information);
        ASSERT_TRUE(entry) << information.toStdString();
        EXPECT_TRUE(entry->item.isInformationOnlyUpdate) << information.toStdString();
    }
    EXPECT_FALSE(
        offered("<sparkle:informationalUpdate><sparkle:version>99</sparkle:version></sparkle:informationalUpdate>" +
                archive)
            ->item.isInformationOnlyUpdate)
        << "this build can take it";
}

TEST(HostileInput, Archives) {
    const testing::TemporaryFolder folder;
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
