#pragma once

// JSON text, written as it comes: a log's samples are too many to be held as a tree of values first.

#include <QtCore/QByteArray>
#include <QtCore/QLatin1String>
#include <QtCore/QString>

#include <concepts>
#include <span>

namespace Host {

class Output;

/// Writes one JSON value after RFC 8259, in UTF-8, indented. The caller closes what it opens, and names each member of
/// an object before its value.
class JsonWriter
{
public:
    explicit JsonWriter(Output &target)
        : output(target)
    {
    }

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }

    /// The name of the member whose value comes next.
    JsonWriter &name(const QString &text);
    JsonWriter &name(const char *ascii) { return name(QString::fromLatin1(ascii)); }

    void string(const QString &text);
    void boolean(bool value) { scalar(value ? "true" : "false"); }
    void integer(std::integral auto value) { scalar(QByteArray::number(value)); }
    /// Reads back exactly; null where JSON has no such number: NaN and the infinities.
    void number(double value);
    void null() { scalar("null"); }
    /// An array of numbers on one line, null also where a sample has no value.
    void samples(std::span<const double> values);

private:
    void begin(char bracket);
    void end(char bracket);
    void scalar(const QByteArray &text);
    void startValue();
    void startLine();

    Output &output;
    int depth = 0;
    bool isFirst = true; // nothing yet in the innermost object or array
    bool isAfterName = false;
};

} // namespace Host
