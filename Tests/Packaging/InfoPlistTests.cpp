// What the Mac's bundle says of itself, as the build has filled it in.
#include "Model/Updates/Updates.h"

#include "Support/Testing.h"

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

namespace {

using Properties = std::map<std::string, std::string>;

/// The one dictionary of a property list: "type text" under each key. Empty when the file is not one.
Properties propertiesIn(const char* path) {
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    QXmlStreamReader xml(text);
    while (!xml.atEnd())
        xml.readNext();
    Properties properties;
    const QRegularExpression entry("<key>(.*)</key>\\s*<(\\w+)(?:/>|>([^<]*)</)");
    for (const QRegularExpressionMatch& match : entry.globalMatch(text)) {
        const std::string value = match.captured(3).toStdString();
        if (!properties
                 .emplace(match.captured(1).toStdString(),
                          match.captured(2).toStdString() + (value.empty() ? "" : ' ' + value))
                 .second)
            return {};
    }
    return xml.hasError() ? Properties() : properties;
}

std::string text(const std::string& value) {
    return value.empty() ? "string" : "string " + value;
}

} // namespace

TEST(InfoPlist, SaysWhatTheSystemAndTheUpdaterReadInTheTypesTheyExpect) {
    const Properties expected{
        {"CFBundleExecutable", text("Vantoro")},
        {"CFBundleIdentifier", text("example.vantoro.Vantoro")},
        {"CFBundleShortVersionString", text(VANTORO_VERSION)},
        {"CFBundleVersion", text(VANTORO_BUILD_NUMBER)},
        {"LSMinimumSystemVersion", text("13.0")},
        {"NSHighResolutionCapable", "true"},
        {"SUEnableAutomaticChecks", "true"},
        {"SUEnableSystemProfiling", "false"},
        {"SUFeedURL", text("https://" + std::string(vantoro::Updates::host) + "/appcast.xml")},
        {"SUPublicEDKey", text(VANTORO_UPDATE_PUBLIC_KEY)},
        {"SUScheduledCheckInterval", "integer 86400"},
        {"SUVerifyUpdateBeforeExtraction", "true"},
    };
    const Properties found = propertiesIn(VANTORO_INFO_PLIST);
    for (const auto& property : expected)
        EXPECT_TRUE(found.contains(property.first) && found.at(property.first) == property.second) << property.first;
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
