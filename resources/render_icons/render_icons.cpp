// Renders the drawings of a folder into the images that the resource files hold, and into the icon that the
// program's file has on Windows.
// usage: render_icons SOURCE-FOLDER TARGET-FOLDER
#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace
{

struct Job
{
    const char* drawing;
    const char* image;
    int size; // pixels
};

// So large that displays of double density stay sharp: twice the size that is shown, or a second image of
// that size where the image's own size counts.
constexpr Job kJobs[] = {
    {"feature_bag.svg", "AppIcon/FeatureBag.png", 64},
    {"feature_bag.svg", "AppIcon/FeatureBag.ico", 256},
    {"feature_bag.svg", "hicolor/16.png", 16},
    {"feature_bag.svg", "hicolor/24.png", 24},
    {"feature_bag.svg", "hicolor/32.png", 32},
    {"feature_bag.svg", "hicolor/48.png", 48},
    {"feature_bag.svg", "hicolor/64.png", 64},
    {"feature_bag.svg", "hicolor/128.png", 128},
    {"feature_bag.svg", "hicolor/256.png", 256},
    {"state_free.svg", "State/use.png", 68},
    {"state_in_use.svg", "State/notuse.png", 68},
    {"state_unreachable.svg", "State/notreach.png", 68},
    {"more_normal.svg", "btn/ic_more_normal.png", 20},
    {"more_normal.svg", "btn/ic_more_normal@2x.png", 40},
    {"more_click.svg", "btn/ic_more_click.png", 20},
    {"more_click.svg", "btn/ic_more_click@2x.png", 40},
    {"more_disable.svg", "btn/ic_more_disable.png", 20},
    {"more_disable.svg", "btn/ic_more_disable@2x.png", 40},
};

constexpr int kIconSizes[] = {16, 24, 32, 48, 64, 128, 256};
constexpr int kIconCount = int(sizeof kIconSizes / sizeof *kIconSizes);

// Null: it is no drawing.
QImage draw(const QString& drawing, int size)
{
    QSvgRenderer renderer(drawing);
    if (!renderer.isValid())
        return {};
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

bool render(const QString& drawing, const QString& target, int size)
{
    const QImage image = draw(drawing, size);
    return !image.isNull() && QDir().mkpath(QFileInfo(target).path()) && image.save(target);
}

QByteArray pngOf(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

// The drawing in every size in one file; Qt writes icons of one size. As Windows takes it: a directory of
// the images, each 16 bytes, and the images behind it, as PNG.
bool renderIcon(const QString& drawing, const QString& target)
{
    QByteArray directory, images;
    QDataStream out(&directory, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint16(0) << quint16(1) << quint16(kIconCount);
    for (const int size : kIconSizes) {
        const QByteArray png = pngOf(draw(drawing, size));
        if (png.isEmpty())
            return false;
        const quint8 side = quint8(size); // 0 stands for 256
        out << side << side << quint8(0) << quint8(0) << quint16(1) << quint16(32) << quint32(png.size())
            << quint32(6 + 16 * kIconCount + images.size());
        images += png;
    }
    QFile file(target);
    return file.open(QIODevice::WriteOnly) &&
           file.write(directory + images) == directory.size() + images.size();
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: render_icons SOURCE-FOLDER TARGET-FOLDER\n", stderr);
        return 2;
    }
    for (const Job& job : kJobs) {
        const QString drawing = QDir(arguments[1]).filePath(job.drawing);
        if (!render(drawing, QDir(arguments[2]).filePath(job.image), job.size)) {
            std::fprintf(stderr, "%s cannot be rendered\n", qPrintable(drawing));
            return 1;
        }
    }
    if (!renderIcon(QDir(arguments[1]).filePath("feature_bag.svg"),
                    QDir(arguments[2]).filePath("Import_Export_Features.ico"))) {
        std::fputs("the program's icon cannot be written\n", stderr);
        return 1;
    }
}
