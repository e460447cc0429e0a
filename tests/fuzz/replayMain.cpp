// Without a fuzzing engine a fuzz target replays the seeds that make_seeds wrote, in the first
// folder given to it, with small changes of each, and the files of any other folder as they are.
// Every fault ever found, and what reaches the most places of the code, lies in corpus/TARGET.

#include "FuzzTarget.h"

#include <QByteArray>
#include <QDirIterator>
#include <QFile>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace
{

void run(const QByteArray& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                           static_cast<std::size_t>(input.size()));
}

/// Deterministic small changes of one input: prefixes and flipped bytes.
void runVariants(const QByteArray& bytes)
{
    constexpr int kVariants = 48;
    for (int variant = 1; variant < kVariants; ++variant) {
        run(bytes.left(bytes.size() * variant / kVariants));
        QByteArray changed = bytes;
        for (qsizetype at = variant; at < changed.size(); at += qsizetype{61} * variant) {
            changed[at] = static_cast<char>(changed.at(at) ^ (1 << (variant % 8)));
        }
        run(changed);
    }
}

bool replay(const QString& path, bool withVariants)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return false;
    }
    const QByteArray bytes = file.readAll();
    run(bytes);
    if (withVariants) {
        runVariants(bytes);
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    int inputs = 0;
    for (int index = 1; index < argc; ++index) {
        QDirIterator folder(QString::fromLocal8Bit(argv[index]), QDir::Files);
        while (folder.hasNext()) {
            if (!replay(folder.next(), index == 1)) {
                return EXIT_FAILURE;
            }
            ++inputs;
        }
    }
    std::printf("%d inputs, and variants of the seeds\n", inputs);
    return inputs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
