// A sidecar alone, compared with a plain reader on the file itself.

#include "ld/ldx.h"

#include "fuzz.h"

#include <QtCore/QXmlStreamReader>

#include <algorithm>

namespace {

struct Content
{
    KOV::SDK::Session session = KOV::SDK::Session::UnknownSession;
    QMap<QString, KOV::SDK::Value> values;
    bool exceedsLimits = false;
};

Content plainContent(const QString &path)
{
    constexpr qint64 maxFileBytes = 1 << 20;
    constexpr qint64 maxTokenBytes = 1 << 14;
    constexpr int maxCharacterBytes = 4;
    constexpr int maxDepth = 64;
    constexpr QLatin1String idName("Id");
    constexpr QLatin1String unitName("Unit");
    Content content;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return content;
    QXmlStreamReader xml(&file);
    bool hasSession = false;
    int depth = 0;
    qint64 longestToken = 0;
    const auto readNext = [&] {
        const qint64 begin = xml.characterOffset();
        const auto token = xml.readNext();
        longestToken = std::max(longestToken, xml.characterOffset() - begin);
        depth += token == QXmlStreamReader::StartElement ? 1 : token == QXmlStreamReader::EndElement ? -1 : 0;
    };
    for (readNext(); !xml.atEnd() && depth <= maxDepth; readNext()) {
        const auto attributes = xml.attributes();
        const auto id = attributes.value(idName);
        const auto value = attributes.value(QLatin1String("Value"));
        const auto unit = attributes.value(unitName);
        if (id == u"Event" && !hasSession)
            content.session = getSessionFromString(value.toString());
        hasSession = hasSession || id == u"Event";
        if (!attributes.hasAttribute(idName) || id == u"Event" || id == u"Session")
            continue;
        QVariant variant = value.toString();
        if (attributes.hasAttribute(unitName))
            variant = value.toDouble();
        content.values[id.toString().remove(QStringLiteral("CarSetup_"))] = {variant, unit.toString()};
    }
    content.exceedsLimits =
        file.size() > maxFileBytes || (file.size() > maxTokenBytes && longestToken * maxCharacterBytes > maxTokenBytes);
    return content;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = Fuzz::write(QStringLiteral("log.ldx"), Fuzz::bytesOf(data, size));
    const Content plain = plainContent(path);
    const KOV::SDK::Session session = loadSession(path);
    const auto values = loadValues(path);
    if (plain.exceedsLimits)
        return 0;
    Fuzz::require(session == plain.session);
    Fuzz::require(values.keys() == plain.values.keys());
    for (auto value = values.begin(); value != values.end(); ++value) {
        const KOV::SDK::Value &expected = plain.values[value.key()];
        // As texts, since NaN is not equal to itself.
        Fuzz::require(value->toString() == expected.toString() && value->typeId() == expected.typeId());
        Fuzz::require(value->unit() == expected.unit() && value->unit().isNull() == expected.unit().isNull());
    }
    return 0;
}
