// Stands in for the fuzzing engine where there is none: runs a target on the files of the folders that are named.

#include "fuzz.h"

#include <QtCore/QDirIterator>

#include <cstdio>

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator files(QFile::decodeName(argv[i]), QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            Fuzz::require(file.open(QIODevice::ReadOnly));
            const QByteArray content = file.readAll();
            std::fprintf(stderr, "%s\n", qPrintable(file.fileName()));
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(content.data()),
                                   static_cast<size_t>(content.size()));
            ++count;
        }
    }
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
