// Everything that must not get as far as the copy: feeds, downloads, archives, and copies that are not the updater's.
#include "Platform/Linux/Updates/AppcastEngineTest.h"

namespace vantoro {
namespace {

TEST_F(AppcastEngineTest, FeedsThatAreRefused) {
    const auto serves = [&](const Resource& resource) { server.resources["/appcast.xml"] = resource; };
    publish(good, {.version = "2.0", .build = "200", .signature = "none"});
    expectRefused(unverified, "an unsigned entry");
    publish(good, {.version = "2.0", .build = "200", .length = 600ULL * 1024 * 1024});
    expectRefused(unverified, "an archive without bounds");
    const std::string longest(64, '9');
    for (const auto& [what, version, number] :
         std::vector<std::array<std::string, 3>>{{"no short version", "", "200"},
                                                 {"a line break in the version", "2.0\nUPDATE phase updated", "200"},
                                                 {"a line break in the build", "2.0",
                                                  "200\n"
                                                  "1"},
                                                 {"a version without end", longest + "9", "200"},
                                                 {"a build without end", "2.0", longest + "9"},
                                                 {"letters that turn the line around", "2.0\xE2\x80\xAE", "200"}}) {
        publish(good, {.version = version, .build = number});
        expectRefused(unverified, what);
        EXPECT_EQ(archiveRequests, 0) << what;
    }
    QByteArray attributes = "<rss";
    for (int i = 0; i < 100'000; ++i)
        attributes += " a" + QByteArray::number(i) + "='1'";
    serves({.body = attributes + "/>"});
    expectRefused(unverified, "attributes for minutes");
    serves({.body = "<rss>", .announcedLength = 100'000'000, .isEndless = true});
    expectRefused(unverified, "a feed of 100 MB");
    serves({.body = "<rss><channel>", .isEndless = true});
    expectRefused(unverified, "a feed without end");
    serves({.body = "<html><body>Welcome to the hotel</body></html>"});
    expectRefused(unverified, "no feed");
    serves({.body = "<!DOCTYPE x [<!ENTITY a 'b'>]><rss>&a;</rss>"});
    expectRefused(unverified, "a document type");
    serves({.body = "<rss><channel><item>"});
    expectRefused(unverified, "half a feed");
    serves({.status = 500});
    expectRefused(unreachable, "an error page");
    serves({.redirect = server.plainAddress("/plain.xml")});
    expectRefused(unreachable, "sent on to plain http");
    serves({.redirect = server.address("/appcast.xml")});
    expectRefused(unreachable, "sent round in circles");
    publish(good);
    trustsServer = false;
    expectRefused(unreachable, "a server that nobody vouches for");
    EXPECT_EQ(server.requestsFor("/plain.xml"), 0);
}

TEST_F(AppcastEngineTest, DownloadsThatAreRefused) {
    const auto archive = [&]() -> Resource& { return server.resources["/archive.tar.gz"]; };
    publish(good, {.version = "2.0", .build = "200", .signature = testing::SigningKey().signatureOver(good)});
    expectRefused(unverified, "another key's signature");
    publish(good, {.version = "2.0", .build = "200", .signature = "bm90IGEgc2lnbmF0dXJl"});
    expectRefused(unverified, "no signature");
    publish(good);
    archive().body[1000] = static_cast<char>(archive().body[1000] ^ 1);
    expectRefused(unverified, "one bit");
    publish(good);
    archive().body.chop(1);
    expectRefused(unverified, "one byte short");
    publish(good);
    archive().body += "x";
    expectRefused(unverified, "one byte more");
    publish(good);
    archive().isEndless = true;
    expectRefused(unverified, "no end");
    publish(good);
    archive() = {.status = 404};
    expectRefused(unreachable, "not there");
    publish(good);
    archive().redirect = server.plainAddress("/plain");
    expectRefused(unreachable, "sent on to plain http");
    publish(good, {.version = "2.0", .build = "200", .url = server.plainAddress("/plain")});
    expectRefused(unreachable, "announced at plain http");
    publish(good, {.version = "2.0", .build = "200", .url = "file:///etc/passwd"});
    expectRefused(unreachable, "announced as a file");
    EXPECT_EQ(server.requestsFor("/plain"), 0);
}

TEST_F(AppcastEngineTest, SignedArchivesThatAreRefused) {
    const auto with = [](const ArchiveItem& item) {
        auto items = testing::release("2.0", "200");
        items.push_back(item);
        return testing::archiveOf(items);
    };
    const std::vector<std::pair<std::string, QByteArray>> broken{
        {"climbs", with({.path = "Vantoro-2.0/../../escaped"})},
        {"absolute", with({.path = folder.path() + "/escaped"})},
        {"beside its folder", with({.path = "escaped"})},
        {"in another folder", with({.path = "other/escaped"})},
        {"a link", with({.path = "Vantoro-2.0/link", .link = "/etc"})},
        {"a hard link", with({.path = "Vantoro-2.0/link", .link = "/etc/passwd", .isHardLink = true})},
        {"over a file", with({.path = "Vantoro-2.0/bin/vantoro/x"})},
        {"twice", with({.path = "Vantoro-2.0/bin/vantoro"})},
        {"not an archive", QByteArray(5000, 'x')},
        {"cut", good.left(good.size() / 2)}};
    for (const auto& [what, archive] : broken) {
        publish(archive);
        expectRefused(unfinished, what);
    }
    publish(with({.path = "Vantoro-2.0/stowaway"}));
    expectRefused(unverified, "a file that the manifest does not name");
    publish(good, {.version = "2.1", .build = "200"});
    expectRefused(unverified, "another version than the manifest's");
    auto other = testing::release("2.0", "200");
    other[0].content = "#!/bin/sh\necho vantoro 12.0\n";
    publish(testing::archiveOf(other));
    expectRefused(unfinished, "a program that says another version");
    publish(testing::archiveOf(testing::release("0.9", "90")));
    expectRefused(unverified, "an older release under a newer one's name");
    publish(testing::archiveOf(testing::release("0.9", "90")), {.version = "2.0", .build = "90"});
    install();
    EXPECT_EQ(updates->phase().kind, Kind::current) << "an older release is no update";
    updates.reset();
    auto crippled = testing::release("2.0", "200");
    crippled[0].content = "#!/bin/sh\nexit 127\n";
    publish(testing::archiveOf(crippled));
    expectRefused(unfinished, "a program that does not run here");
}

TEST_F(AppcastEngineTest, CopiesThatCannotBeReplacedStayAsTheyAre) {
    publish(good);
    start();
    EXPECT_TRUE(updates->automaticallyChecksForUpdates());
    updates.reset();
    const std::string manifest = copy() + "/share/vantoro/manifest.json";
    const std::string text = testing::fileText(manifest);
    fs::remove(manifest);
    before = contents();
    start();
    EXPECT_FALSE(updates->automaticallyChecksForUpdates()) << "a package manager looks after it";
    EXPECT_TRUE(updates->isInformationOnly()) << "nor is an install offered";
    expectRefused(immovable, "a package manager's");
    EXPECT_EQ(server.requestsFor("/archive.tar.gz"), 0);
    folder.write("Vantoro/share/vantoro/manifest.json", text);
    // As when an archive was unpacked right into ~/.local.
    folder.write("Vantoro/share/fonts/mine.ttf", "font");
    before = contents();
    publish(good);
    expectRefused(immovable, "a folder with other things in it");
}

} // namespace
} // namespace vantoro
