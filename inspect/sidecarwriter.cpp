#include "inspect/sidecarwriter.h"

#include <QtCore/QXmlStreamWriter>

namespace Inspect {

namespace {

// XML 1.0 has no way to write these, escaped or not.
bool isCarried(QChar character)
{
    const char16_t unit = character.unicode();
    return unit >= u' ' ? unit < 0xFFFE : unit == u'\t' || unit == u'\n' || unit == u'\r';
}

QString carried(QString text)
{
    text.removeIf([](QChar character) { return !isCarried(character); });
    return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

} // namespace

QByteArray sidecarText(const QList<SidecarItem> &items)
{
    QByteArray elements;
    QXmlStreamWriter xml(&elements);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartElement(QStringLiteral("Log"));
    xml.writeStartElement(QStringLiteral("Details"));
    for (const SidecarItem &item : items) {
        xml.writeEmptyElement(QStringLiteral("Item"));
        xml.writeAttribute(QStringLiteral("Id"), carried(item.id));
        xml.writeAttribute(QStringLiteral("Value"), carried(item.value));
        if (item.unit)
            xml.writeAttribute(QStringLiteral("Unit"), carried(*item.unit));
    }
    xml.writeEndDocument();
    // Versions of Qt differ in the line breaks around the whole.
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + elements.trimmed() + '\n';
}

} // namespace Inspect
