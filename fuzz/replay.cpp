// Replaces the fuzzing engine where there is none: replay COUNT FOLDER... runs a target on the files of the folders,
// and then on COUNT mixes of them, which are the same each time.

#include "fuzz.h"

#include <QtCore/QDir>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

std::string current; // printed where the target rejects it

void run(const std::string &input)
{
    current = input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(current.data()), current.size());
}

void printInput(int)
{
    for (const char c : current)
        std::fprintf(stderr, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    std::fputc('\n', stderr);
}

// A seed with pieces of all seeds inserted, pasted over and cut out, and with some digits and bytes changed.
std::string mixOf(const std::vector<std::string> &seeds, std::mt19937 &random)
{
    const auto below = [&random](std::size_t bound) { return random() % bound; };
    constexpr std::size_t longestPiece = 16;
    std::string mix = seeds[below(seeds.size())];
    for (std::size_t changes = below(12); changes > 0; --changes) {
        const std::string &other = seeds[below(seeds.size())];
        const std::string piece = other.substr(below(other.size() + 1), below(longestPiece));
        mix.replace(below(mix.size() + 1), below(2) * below(longestPiece), piece);
        if (!mix.empty() && below(8) == 0)
            mix[below(mix.size())] = static_cast<char>(random());
    }
    for (char &c : mix) {
        if (c >= '0' && c <= '9' && below(4) == 0)
            c = static_cast<char>('0' + below(10));
    }
    if (below(8) == 0)
        mix.resize(below(mix.size() + 1));
    return mix;
}

} // namespace

int main(int argc, char **argv)
{
    for (const char *locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "nl_NL.UTF-8"}) // a host may set one with a decimal comma
        std::setlocale(LC_NUMERIC, locale);                                  // NOLINT(concurrency-mt-unsafe)
    std::signal(SIGABRT, printInput); // NOLINT(bugprone-signal-handler): the process ends anyway
    std::vector<std::string> seeds;
    for (int i = 2; i < argc; ++i) {
        for (const QFileInfo &info : QDir(QFile::decodeName(argv[i])).entryInfoList(QDir::Files)) {
            QFile file(info.filePath());
            Fuzz::require(file.open(QIODevice::ReadOnly));
            std::fprintf(stderr, "%s\n", qPrintable(file.fileName()));
            seeds.push_back(file.readAll().toStdString());
            run(seeds.back());
        }
    }
    std::sort(seeds.begin(), seeds.end());
    std::mt19937 random(1);
    for (int count = seeds.empty() ? 0 : QByteArray(argv[1]).toInt(); count > 0; --count)
        run(mixOf(seeds, random));
    return seeds.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
