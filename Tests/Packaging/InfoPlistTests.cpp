// What the Mac's bundle says of itself, as the build has filled it in.
#include "Model/Updates/Updates.h"

#include <gtest/gtest.h>
#include <map>
#include <QFile>
#include <QXmlStreamReader>
#include <string>

namespace {

using Properties = std::map<std::string, std::string>;

/// The one dictionary of a property list: "type text" under each key. Empty when the file is not one.
Properties propertiesIn(const char* path) {
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != u"plist" || !xml.readNextStartElement() || xml.name() != u"dict")
        return {};
    Properties properties;
    while (xml.readNextStartElement()) {
        if (xml.name() != u"key")
            return {};
        const std::string key = xml.readElementText().toStdString();
        if (!xml.readNextStartElement())
            return {};
        const std::string type = xml.name().toString().toStdString();
        const std::string text = xml.readElementText().toStdString();
        if (!properties.emplace(key, text.empty() ? type : type + ' ' + text).second)
            return {};
    }
    while (!xml.atEnd())
        xml.readNext();
    return xml.hasError() ? Properties() : properties;
}

std::string text(const std::string& value) {
    return value.empty() ? "string" : "string " + value;
}

} // namespace

TEST(InfoPlist, SaysWhatTheSystemAndTheUpdaterReadInTheTypesTheyExpect) {
    const Properties expected{
        {"CFBundleDevelopmentRegion", text("en")},
        {"CFBundleDisplayName", text("Vantoro")},
        {"CFBundleExecutable", text("Vantoro")},
        {"CFBundleIconFile", text("Vantoro.icns")},
        {"CFBundleIdentifier", text("example.vantoro.Vantoro")},
        {"CFBundleInfoDictionaryVersion", text("6.0")},
        {"CFBundleName", text("Vantoro")},
        {"CFBundlePackageType", text("APPL")},
        {"CFBundleShortVersionString", text(VANTORO_VERSION)},
        {"CFBundleVersion", text(VANTORO_BUILD_NUMBER)},
        {"LSApplicationCategoryType", text("public.app-category.utilities")},
        {"LSMinimumSystemVersion", text("13.0")},
        {"NSHighResolutionCapable", "true"},
        {"NSHumanReadableCopyright", text("Copyright © 2026 The Vantoro authors")},
        {"NSPrincipalClass", text("NSApplication")},
        {"SUEnableAutomaticChecks", "true"},
        {"SUEnableSystemProfiling", "false"},
        {"SUFeedURL", text("https://" + std::string(vantoro::Updates::host) + "/appcast.xml")},
        {"SUPublicEDKey", text(VANTORO_UPDATE_PUBLIC_KEY)},
        {"SUScheduledCheckInterval", "integer 86400"},
        {"SUVerifyUpdateBeforeExtraction", "true"},
    };
    EXPECT_EQ(propertiesIn(VANTORO_INFO_PLIST), expected);
}

TEST(InfoPlist, TheBuildNumberIsMadeFromTheVersion) {
    int major = 0;
    int minor = 0;
    int patch = 0;
    ASSERT_EQ(std::sscanf(VANTORO_VERSION, "%d.%d.%d", &major, &minor, &patch), 3);
    EXPECT_EQ(VANTORO_BUILD_NUMBER, std::to_string(major * 10000 + minor * 100 + patch));
}

TEST(Entitlements, LoosenNothing) {
    const Properties properties = propertiesIn(VANTORO_PACKAGING "/macos/Vantoro.entitlements");
    EXPECT_FALSE(properties.empty());
    for (const auto& [key, value] : properties) {
        EXPECT_EQ(value, "false") << key;
    }
}

TEST(Cask, TheCommandStartsTheProgramWithinItsBundleAndZapNamesItsDomain) {
    QFile file(VANTORO_PACKAGING "/macos/vantoro.rb.in");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString cask = QString::fromUtf8(file.readAll());
    EXPECT_FALSE(cask.contains("binary \"#{appdir}")) << "a link";
    EXPECT_TRUE(cask.contains("exec '#{appdir}/Vantoro.app/Contents/MacOS/Vantoro' \"$@\"\n"));
    const std::string identifier = propertiesIn(VANTORO_INFO_PLIST).at("CFBundleIdentifier").substr(sizeof "string");
    EXPECT_TRUE(cask.contains(QString::fromStdString("Preferences/" + identifier + ".plist")));
}
