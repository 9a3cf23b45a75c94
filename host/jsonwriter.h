#pragma once

// JSON as this program writes it: one object per line, by RapidJSON, with Qt's texts and numbers that read back
// exactly.

#include "host/exactnumber.h"
#include "host/output.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <rapidjson/writer.h>

#include <cmath>
#include <optional>
#include <span>
#include <type_traits>

namespace Host {

/// Writes to an Output as it goes: the text is never held whole. Half a surrogate pair becomes a question mark.
///
/// Build the object with StartObject(), Key(), StartArray() and so on, members with write(), and end the line by end().
class JsonWriter
{
public:
    explicit JsonWriter(Output &output)
        : sink(output)
        , writer(sink)
    {
    }

    void startObject() { writer.StartObject(); }
    void endObject() { writer.EndObject(); }
    void startArray() { writer.StartArray(); }
    void endArray() { writer.EndArray(); }
    void null() { writer.Null(); }
    void key(const char *name) { writer.Key(name); }
    void key(const QString &name)
    {
        const QByteArray text = name.toUtf8();
        writer.Key(text.constData(), sizeOf(text));
    }

    /// A number, a truth value, or a text (QString). NaN and the infinities become null.
    template <typename T>
    void value(const T &value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            writer.Bool(value);
        } else if constexpr (std::is_unsigned_v<T>) {
            writer.Uint64(value);
        } else if constexpr (std::is_integral_v<T>) {
            writer.Int64(value);
        } else if constexpr (std::is_floating_point_v<T>) {
            const QByteArray text = std::isfinite(value) ? exactNumber(value) : QByteArray("null");
            writer.RawValue(text.constData(), static_cast<std::size_t>(text.size()), rapidjson::kNumberType);
        } else {
            const QByteArray text = QString(value).toUtf8();
            writer.String(text.constData(), sizeOf(text));
        }
    }
    /// null where there is none.
    template <typename T>
    void value(const std::optional<T> &optional)
    {
        if (optional)
            value(*optional);
        else
            null();
    }

    template <typename T>
    void member(const char *name, const T &memberValue)
    {
        key(name);
        value(memberValue);
    }

    /// An array of @p samples: those that are finite and valid values, null for each other.
    void samples(std::span<const double> samples);
    /// An array of @p samples: those that are finite, null for each other.
    void samples(std::span<const float> samples);

    /// Ends the line.
    void end() { sink.write("\n"); }

private:
    class Sink
    {
    public:
        using Ch = char; // NOLINT(readability-identifier-naming)

        explicit Sink(Output &output)
            : output(output)
        {
        }
        void Put(char c) { output.put(c); } // NOLINT(readability-identifier-naming)
        void Flush() {}                     // NOLINT(readability-identifier-naming)
        void write(QByteArrayView bytes) { output.write(bytes); }

    private:
        Output &output;
    };

    class Writer : public rapidjson::Writer<Sink>
    {
    public:
        using rapidjson::Writer<Sink>::Writer;

        /// Begins a value that is written to the sink directly.
        void beginRaw(rapidjson::Type type) { Prefix(type); }
    };

    template <typename Number, typename IsValue>
    void numbers(std::span<const Number> samples, const IsValue &isValue);

    static rapidjson::SizeType sizeOf(const QByteArray &text) { return static_cast<rapidjson::SizeType>(text.size()); }

    Sink sink;
    Writer writer;
};

} // namespace Host
