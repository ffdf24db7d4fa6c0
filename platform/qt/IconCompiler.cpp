// Run by the build: draws what the program would draw anew at each of its starts. Writes the pictures of a drawing one
// after the other, each as its rows of pixels from top to bottom with nothing between: of a symbol how far each pixel
// is covered (QImage::Format_Alpha8), of an icon its colours (QImage::Format_ARGB32_Premultiplied).
//
//   icon_compiler symbol|icon DRAWING.svg FILE PIXELS...

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const QString& reason)
{
    std::fprintf(stderr, "icon_compiler: %s\n", qPrintable(reason));
    std::exit(1);
}

QImage pictureOf(QSvgRenderer& drawing, int pixels)
{
    QImage picture(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        fail(QStringLiteral("a picture cannot have that size"));
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    return picture;
}

} // namespace

int main(int argc, char* argv[])
{
    const QByteArray kind(argc > 1 ? argv[1] : "");
    const bool isSymbol = kind == "symbol";
    if (argc < 5 || (!isSymbol && kind != "icon"))
        fail(QStringLiteral("usage: icon_compiler symbol|icon DRAWING FILE PIXELS..."));
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[2]));
    if (!drawing.isValid() || drawing.viewBoxF().width() != drawing.viewBoxF().height())
        fail(QString::fromLocal8Bit(argv[2]) + QStringLiteral(" is no square drawing"));
    QFile file(QString::fromLocal8Bit(argv[3]));
    if (!file.open(QFile::WriteOnly))
        fail(file.errorString());
    bool isWhole = true;
    for (int at = 4; at < argc; ++at) {
        QImage picture = pictureOf(drawing, std::atoi(argv[at]));
        if (isSymbol)
            picture.convertTo(QImage::Format_Alpha8);
        const qint64 row = qint64{picture.width()} * picture.depth() / 8;
        for (int y = 0; y < picture.height(); ++y)
            isWhole &= file.write(reinterpret_cast<const char*>(picture.constScanLine(y)), row) == row;
    }
    if (!isWhole || !file.flush())
        fail(file.errorString());
    return 0;
}
