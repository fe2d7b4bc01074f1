// Everything that must not get as far as the copy: feeds, downloads, archives, and copies that are not the updater's.
#include "Platform/Linux/Updates/AppcastEngineTest.h"

namespace vantoro {
namespace {

TEST_F(AppcastEngineTest, FeedsThatAreRefused) {
    publish(good, {.version = "2.0", .build = "200", .signature = "none"});
    expectRefused(unverified, "an unsigned entry");
    publish(good, {.version = "2.0", .build = "200", .length = 600ULL * 1024 * 1024});
    expectRefused(unverified, "an archive without bounds");
    const std::string longest(64, '9');
    for (const auto& [what, version, number] :
         std::vector<std::array<std::string, 3>>{{"no short version", "", "200"},
                                                 {"a line break in the version", "2.0\nUPDATE phase updated", "200"},
                                                 {"a line break in the build", "2.0", "200\n0"},
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
    for (const auto& [what, message, resource] : std::vector<std::tuple<const char*, std::string, Resource>>{
             {"attributes for minutes", unverified, {.body = attributes + "/>"}},
             {"a feed of 100 MB", unverified, {.body = "<rss>", .announcedLength = 100'000'000, .isEndless = true}},
             {"a feed without end", unverified, {.body = "<rss><channel>", .isEndless = true}},
             {"no feed", unverified, {.body = "<html><body>Welcome to the hotel</body></html>"}},
             {"a document type", unverified, {.body = "<!DOCTYPE x [<!ENTITY a 'b'>]><rss>&a;</rss>"}},
             {"half a feed", unverified, {.body = "<rss><channel><item>"}},
             {"an error page", unreachable, {.status = 500}},
             {"sent on to plain http", unreachable, {.redirect = server.plainAddress("/plain.xml")}},
             {"sent round in circles", unreachable, {.redirect = server.address("/appcast.xml")}}}) {
        server.resources["/appcast.xml"] = resource;
        expectRefused(message, what);
    }
    publish(good);
    trustsServer = false;
    expectRefused(unreachable, "a server that nobody vouches for");
    EXPECT_EQ(server.requestsFor("/plain.xml"), 0);
}

TEST_F(AppcastEngineTest, DownloadsThatAreRefused) {
    const auto refuses = [&](const std::string& message, const char* what, FeedItem item, const auto& spoil) {
        item.version = "2.0";
        item.build = "200";
        publish(good, item);
        spoil(server.resources["/archive.tar.gz"]);
        expectRefused(message, what);
    };
    const auto asItIs = [](Resource&) {};
    refuses(unverified, "another key's signature", {.signature = testing::SigningKey().signatureOver(good)}, asItIs);
    refuses(unverified, "no signature", {.signature = "bm90IGEgc2lnbmF0dXJl"}, asItIs);
    refuses(unverified, "one bit", {}, [](Resource& served) { served.body[1000] = char(served.body[1000] ^ 1); });
    refuses(unverified, "one byte short", {}, [](Resource& served) { served.body.chop(1); });
    refuses(unverified, "one byte more", {}, [](Resource& served) { served.body += "x"; });
    refuses(unverified, "no end", {}, [](Resource& served) { served.isEndless = true; });
    refuses(unreachable, "not there", {}, [](Resource& served) { served = {.status = 404}; });
    const std::string plain = server.plainAddress("/plain");
    refuses(unreachable, "sent on to plain http", {}, [&](Resource& served) { served.redirect = plain; });
    refuses(unreachable, "announced at plain http", {.url = plain}, asItIs);
    refuses(unreachable, "announced as a file", {.url = "file:///etc/passwd"}, asItIs);
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
