// Parsing and indexing a description against bare parsing of the same text.
// usage: bench_description [FILE]   (default: the largest of the folder KX_DESCRIPTIONS)
#include "DirectExport.h"
#include "Measure.h"
#include "TableCamera.h"

#include <QDir>
#include <QDomDocument>

#include <cstdio>

namespace
{

QString largestDescription()
{
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    const QFileInfoList files = folder.entryInfoList({"*.xml"}, QDir::Files, QDir::Size);
    return files.isEmpty() || !qEnvironmentVariableIsSet("KX_DESCRIPTIONS") ? QString()
                                                                            : files.first().filePath();
}

} // namespace

int main(int argc, char** argv)
{
    const QString path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : largestDescription();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::puts("SKIPPED: name a description, or a folder of them in KX_DESCRIPTIONS");
        return 0;
    }
    const QByteArray bytes = file.readAll();
    bench::setDescription(bytes.toStdString());

    const double indexing = bench::medianSeconds(
        [] {
            bench::IndexedCamera camera; // as for a camera's first export: no earlier description to let go
        },
        15);
    const double parsing = bench::medianSeconds(
        [&] {
            QDomDocument document;
            document.setContent(QString::fromUtf8(bytes));
        },
        15);
    std::printf("%s, %lld bytes\n", qPrintable(QFileInfo(path).fileName()),
                static_cast<long long>(bytes.size()));
    std::printf("fetch, parse and index %.1f ms, bare parsing %.1f ms: ratio %.2f (target: at most 1.50)\n",
                indexing * 1e3, parsing * 1e3, indexing / parsing);
}
