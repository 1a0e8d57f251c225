// Draws an SVG file into PNG files: penwick_render_icon DRAWING (SIZE FILE)...

#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <cstdio>

namespace {

bool render(QSvgRenderer &drawing, int size, const QString &path)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    return image.save(path, "PNG");
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 4 || argc % 2 != 0) {
        std::fputs("usage: penwick_render_icon DRAWING (SIZE FILE)...\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "penwick_render_icon: this is no drawing: %s\n", argv[1]);
        return 1;
    }
    for (int i = 2; i < argc; i += 2) {
        const int size = QByteArray(argv[i]).toInt();
        if (size <= 0 || !render(drawing, size, QString::fromLocal8Bit(argv[i + 1]))) {
            std::fprintf(stderr, "penwick_render_icon: cannot write %s\n", argv[i + 1]);
            return 1;
        }
    }
    return 0;
}
