#include "Platform/Linux/Updates/Appcast.h"

#include "Model/VersionOrder.h"

#include <QXmlStreamReader>

namespace vantoro {

namespace {

constexpr std::size_t mostItems = 1000;
const QString& sparkle() {
    static const QString name = QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");
    return name;
}

std::string textOf(QXmlStreamReader& xml) {
    return xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
}

void readEnclosure(const QXmlStreamAttributes& attributes, const QUrl& feed, AppcastEntry& entry) {
    entry.archive = feed.resolved(QUrl(attributes.value("url").toString(), QUrl::StrictMode));
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

/// From the start of an <item> to its end.
AppcastEntry readItem(QXmlStreamReader& xml, const QUrl& feed) {
    AppcastEntry entry;
    bool hasLink = false;
    while (xml.readNextStartElement()) {
        const bool isSparkle = xml.namespaceUri() == sparkle();
        if (isSparkle && xml.name() == u"version") {
            entry.item.versionString = textOf(xml);
        } else if (isSparkle && xml.name() == u"shortVersionString") {
            entry.item.displayVersionString = textOf(xml);
        } else if (isSparkle && xml.name() == u"minimumSystemVersion") {
            entry.minimumSystem = textOf(xml);
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
    if (entry.item.displayVersionString.empty())
        entry.item.displayVersionString = entry.item.versionString;
    entry.item.isInformationOnlyUpdate = entry.archive.isEmpty() && hasLink;
    return entry;
}

} // namespace

std::optional<std::vector<AppcastEntry>> parseAppcast(const QByteArray& bytes, const QUrl& feed) {
    QXmlStreamReader xml(bytes);
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
            if (!entry.item.versionString.empty() && entries.size() < mostItems)
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
        if (entry.system != system)
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
    } else if (latest != nullptr) {
        choice.latest = latest->item;
        // What is newer and was not chosen runs on newer systems only.
        if (isNewer(*latest, build))
            choice.reason = reasonSystemIsTooOld;
    }
    return choice;
}

} // namespace vantoro
