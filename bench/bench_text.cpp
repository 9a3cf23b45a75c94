// Number texts by themselves: this library's conversions compared with others.

#include "baseline.h"
#include "pairs.h"

#include "csv/csvnumber.h"

#include <QtCore/QFile>
#include <QtCore/QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Texts one after the other, with room before the first for readers of whole words.
struct Texts
{
    std::string characters;
    QString wideCharacters;
    std::vector<std::size_t> begins; // and the end of the last

    std::size_t size() const { return begins.size() - 1; }
    std::string_view text(std::size_t i) const
    {
        return std::string_view(characters).substr(begins[i], begins[i + 1] - begins[i]);
    }
    QStringView wideText(std::size_t i) const
    {
        return QStringView(wideCharacters)
            .sliced(static_cast<qsizetype>(begins[i]), static_cast<qsizetype>(text(i).size()));
    }
};

// The fields of the rows in the middle of a text export, each followed by `tail`.
Texts fieldsOfLog(std::string_view tail)
{
    constexpr qint64 some = 2'000'000; // bytes
    QFile file(tidyLog());
    if (!file.open(QIODevice::ReadOnly) || !file.seek(file.size() / 2))
        return {};
    file.readLine();
    const QByteArray bytes = file.read(some);
    Texts texts;
    texts.characters.assign(sizeof(quint64), ' ');
    texts.begins.push_back(texts.characters.size());
    std::string_view rest(bytes.constData(), static_cast<std::size_t>(bytes.lastIndexOf(',')));
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find_first_of(",\n"), rest.size());
        texts.characters += rest.substr(0, length);
        if (length > 0)
            texts.characters += tail;
        texts.begins.push_back(texts.characters.size());
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    texts.wideCharacters =
        QString::fromLatin1(texts.characters.data(), static_cast<qsizetype>(texts.characters.size()));
    return texts;
}

template <typename Convert>
std::function<Work()> conversion(std::string_view tail, Convert convert)
{
    return [=] {
        const auto texts = std::make_shared<const Texts>(fieldsOfLog(tail));
        return Work{[=](Stopwatch *watch) {
                        constexpr int rounds = 10;
                        double sum = 0.0;
                        for (int round = 0; round < rounds; ++round) {
                            for (std::size_t i = 0; i < texts->size(); ++i)
                                sum += convert(*texts, i);
                        }
                        benchmark::DoNotOptimize(sum);
                        watch->stop();
                        return static_cast<qint64>(texts->size()) * rounds;
                    },
                    static_cast<qint64>(texts->characters.size()) * 10};
    };
}

} // namespace

void registerTextBenchmarks()
{
    const auto word = [](const Texts &texts, std::size_t i) {
        std::string_view text = texts.text(i); // a long one loses its first characters, at the same cost
        double value = 0.0;
        if (text.size() > 1) {
            text.remove_suffix(1);
            const bool isNegative = text.starts_with('-');
            const std::size_t length = std::min(text.size() - (isNegative ? 1 : 0), sizeof(quint64));
            Csv::shortDecimalBefore(text.data() + text.size(), length, isNegative, '.', &value);
        }
        return value;
    };
    const auto own = [](const Texts &texts, std::size_t i) { return Csv::toDouble(texts.text(i)); };
    const auto digits = [](const Texts &texts, std::size_t i) { return Baseline::toDouble(texts.text(i)); };
    const auto qt = [](const Texts &texts, std::size_t i) { return texts.wideText(i).toDouble(); };
    const auto standard = [](const Texts &texts, std::size_t i) {
        const std::string_view text = texts.text(i);
        double value = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    };
    registerPair("number/word", "digit loop", conversion(" ", word), conversion(" ", digits));
    for (const auto &[name, tail] : {std::pair("/logged", ""), std::pair("/long", "4271828")}) {
        registerPair(std::string("number/own") + name, "from_chars", conversion(tail, own), conversion(tail, standard));
        registerPair(std::string("number/own-beside-qt") + name, "QString", conversion(tail, own),
                     conversion(tail, qt));
    }
}
