#include "host/jsonwriter.h"

#include "host/output.h"
#include "host/textformat.h"
#include "sdk/sdk_utils.h"

#include <cmath>

namespace Host {

namespace {

constexpr qsizetype indentWidth = 2;

QByteArray numberText(double value)
{
    return std::isfinite(value) ? exactNumber(value) : QByteArray("null");
}

QByteArray quoted(const QString &text)
{
    constexpr char16_t firstPrintable = 0x20;
    QString escaped;
    escaped.reserve(text.size() + 2);
    escaped += u'"';
    for (const QChar character : text) {
        if (character == u'"' || character == u'\\')
            escaped += u'\\';
        if (character.unicode() < firstPrintable)
            escaped += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            escaped += character;
    }
    escaped += u'"';
    return escaped.toUtf8(); // half a surrogate pair becomes U+FFFD
}

} // namespace

JsonWriter &JsonWriter::name(const QString &text)
{
    startValue();
    output.write(quoted(text) + ": ");
    isAfterName = true;
    return *this;
}

void JsonWriter::string(const QString &text)
{
    scalar(quoted(text));
}

void JsonWriter::number(double value)
{
    scalar(numberText(value));
}

void JsonWriter::samples(std::span<const double> values)
{
    startValue();
    QByteArrayView separator = "[";
    for (const double value : values) {
        output.write(separator);
        output.write(KOV::SDK::isValidValue(value) ? numberText(value) : QByteArray("null"));
        separator = ", ";
    }
    output.write(values.empty() ? QByteArrayView("[]") : QByteArrayView("]"));
}

void JsonWriter::begin(char bracket)
{
    startValue();
    output.write(QByteArrayView(&bracket, 1));
    ++depth;
    isFirst = true;
}

void JsonWriter::end(char bracket)
{
    --depth;
    if (!isFirst)
        startLine();
    output.write(QByteArrayView(&bracket, 1));
    isFirst = false;
    if (depth == 0)
        output.write(QByteArrayView("\n"));
}

void JsonWriter::scalar(const QByteArray &text)
{
    startValue();
    output.write(text);
}

void JsonWriter::startValue()
{
    if (isAfterName) {
        isAfterName = false;
        return;
    }
    if (!isFirst)
        output.write(QByteArrayView(","));
    isFirst = false;
    if (depth > 0)
        startLine();
}

void JsonWriter::startLine()
{
    output.write('\n' + QByteArray(depth * indentWidth, ' '));
}

} // namespace Host
