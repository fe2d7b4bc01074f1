#include "Platform/Linux/Updates/Appcast.h"

#include "Model/Text/Release.h"

#include <algorithm>
#include <QXmlStreamReader>
#include <string_view>

namespace vantoro {

namespace {

constexpr int mostElements = 10'000;
constexpr int mostAttributes = 32;
constexpr int mostDepth = 32;
constexpr qsizetype longestAddress = 2000;

/// Where the markup that begins here ends, and how many attributes it may have at most.
struct Tag {
    std::size_t length = 0;
    int attributes = 0;
};

Tag tagAt(std::string_view text) {
    Tag tag;
    char quote = 0;
    for (; tag.length < text.size(); ++tag.length) {
        const char c = text[tag.length];
        if (quote != 0) {
            quote = c == quote ? char(0) : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '=') {
            ++tag.attributes;
        } else if (c == '>') {
            ++tag.length;
            break;
        }
    }
    return tag;
}

/// What a reader would take long over: it compares an element's attributes each with each. Right for as far as the text
/// is well-formed, and a reader goes no further.
bool isWithinBounds(std::string_view text) {
    int elements = 0;
    int depth = 0;
    const auto skip = [&text](std::string_view end) {
        const std::size_t place = text.find(end);
        text.remove_prefix(place == std::string_view::npos ? text.size() : place + end.size());
    };
    for (std::size_t next = text.find('<'); next != std::string_view::npos; next = text.find('<')) {
        text.remove_prefix(next);
        if (text.starts_with("<!--")) {
            skip("-->");
        } else if (text.starts_with("<![CDATA[")) {
            skip("]]>");
        } else if (text.starts_with("<?")) {
            skip("?>");
        } else if (text.starts_with("<!")) {
            return false; // a document type
        } else {
            const Tag tag = tagAt(text);
            const std::string_view markup = text.substr(0, tag.length);
            const bool isEnd = markup.starts_with("</");
            const bool isWhole = markup.ends_with("/>");
            depth += isEnd ? -1 : isWhole ? 0 : 1;
            elements += isEnd ? 0 : 1;
            if (tag.attributes > mostAttributes || elements > mostElements || depth > mostDepth)
                return false;
            text.remove_prefix(tag.length);
        }
    }
    return true;
}

const QString& sparkle() {
    static const QString name = QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");
    return name;
}

std::string textOf(QXmlStreamReader& xml) {
    return xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
}

void readEnclosure(const QXmlStreamAttributes& attributes, const QUrl& feed, AppcastEntry& entry) {
    if (const auto address = attributes.value("url"); address.size() <= longestAddress)
        entry.archive = feed.resolved(QUrl(address.toString(), QUrl::StrictMode));
    entry.item.contentLength = attributes.value("length").toULongLong();
    entry.signature = attributes.value(sparkle(), QLatin1String("edSignature")).toString().toStdString();
    entry.system = attributes.value(sparkle(), QLatin1String("os")).toString().toStdString();
    const auto takeMissing = [&attributes](QLatin1String name, std::string& text) {
        if (text.empty())
            text = attributes.value(sparkle(), name).toString().toStdString();
    };
    takeMissing(QLatin1String("version"), entry.item.versionString);
    takeMissing(QLatin1String("shortVersionString"), entry.item.displayVersionString);
}

/// The builds that the element names; without any, every build.
std::vector<std::string> readInformational(QXmlStreamReader& xml) {
    std::vector<std::string> builds;
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == sparkle() && xml.name() == u"version")
            builds.push_back(textOf(xml));
        else
            xml.skipCurrentElement();
    }
    return builds;
}

/// From the start of an <item> to its end.
AppcastEntry readItem(QXmlStreamReader& xml, const QUrl& feed) {
    AppcastEntry entry;
    bool hasLink = false;
    bool isInformational = false;
    while (xml.readNextStartElement()) {
        const bool isSparkle = xml.namespaceUri() == sparkle();
        if (isSparkle && xml.name() == u"version") {
            entry.item.versionString = textOf(xml);
        } else if (isSparkle && xml.name() == u"shortVersionString") {
            entry.item.displayVersionString = textOf(xml);
        } else if (isSparkle && xml.name() == u"minimumSystemVersion") {
            entry.minimumSystem = textOf(xml);
        } else if (isSparkle && xml.name() == u"channel") {
            entry.channel = textOf(xml);
        } else if (isSparkle && xml.name() == u"informationalUpdate") {
            isInformational = true;
            entry.informationFor = readInformational(xml);
        } else if (!isSparkle && xml.name() == u"description") {
            entry.item.itemDescription = textOf(xml);
        } else if (!isSparkle && xml.name() == u"enclosure") {
            readEnclosure(xml.attributes(), feed, entry);
            xml.skipCurrentElement();
        } else {
            hasLink = hasLink || (!isSparkle && xml.name() == u"link");
            xml.skipCurrentElement();
        }
    }
    // Not compared at any length; a letter too many is left, by which it is refused.
    for (std::string* const text : {&entry.item.versionString, &entry.item.displayVersionString})
        text->resize(std::min(text->size(), longestVersion + 1));
    entry.hasShortVersion = !entry.item.displayVersionString.empty();
    if (!entry.hasShortVersion)
        entry.item.displayVersionString = entry.item.versionString;
    entry.item.isInformationOnlyUpdate =
        (isInformational && entry.informationFor.empty()) || (entry.archive.isEmpty() && hasLink);
    return entry;
}

} // namespace

std::optional<std::vector<AppcastEntry>> parseAppcast(const QByteArray& bytes, const QUrl& feed) {
    if (bytes.size() > mostAppcastBytes || !isWithinBounds({bytes.data(), static_cast<std::size_t>(bytes.size())}))
        return std::nullopt;
    // As text: what it says of its encoding would have it read otherwise than it was measured.
    QXmlStreamReader xml(QString::fromUtf8(bytes));
    std::vector<AppcastEntry> entries;
    bool isFeed = false;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::DTD)
            return std::nullopt;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"rss") {
            isFeed = true;
        } else if (isFeed && xml.name() == u"item") {
            AppcastEntry entry = readItem(xml, feed);
            if (!entry.item.versionString.empty())
                entries.push_back(std::move(entry));
        }
    }
    if (xml.hasError() || !isFeed)
        return std::nullopt;
    return entries;
}

AppcastChoice chooseUpdate(const std::vector<AppcastEntry>& entries, const std::string& build,
                           const std::string& system, const std::string& systemVersion) {
    const auto isNewer = [](const AppcastEntry& entry, const std::string& than) {
        return compareVersions(entry.item.versionString, than) > 0;
    };
    const AppcastEntry* latest = nullptr;
    const AppcastEntry* update = nullptr;
    for (const AppcastEntry& entry : entries) {
        // What has no archive is for every system.
        const bool isForSystem =
            entry.system == system || (entry.item.isInformationOnlyUpdate && entry.archive.isEmpty());
        if (!isForSystem || !entry.channel.empty())
            continue;
        if (latest == nullptr || isNewer(entry, latest->item.versionString))
            latest = &entry;
        if (isNewer(entry, update != nullptr ? update->item.versionString : build) &&
            compareVersions(systemVersion, entry.minimumSystem) >= 0)
            update = &entry;
    }
    AppcastChoice choice;
    if (update != nullptr) {
        choice.update = *update;
        if (std::ranges::find(update->informationFor, build) != update->informationFor.end())
            choice.update->item.isInformationOnlyUpdate = true;
    } else if (latest != nullptr) {
        choice.latest = latest->item;
        // What is newer and was not chosen runs on newer systems only.
        if (isNewer(*latest, build))
            choice.reason = reasonSystemIsTooOld;
    }
    return choice;
}

} // namespace vantoro
