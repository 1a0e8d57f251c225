#include "platform/desktop/SystemFonts.h"

#include <QApplication>
#include <QFontDatabase>
#include <QTest>

namespace penwick {

/// The resolution of fonts is one and a half times the usual one, see `main`.
class SystemFontsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pixels_ofALargerFontResolution_areScaledLikeTheDesktopsFonts();
};

void SystemFontsTest::pixels_ofALargerFontResolution_areScaledLikeTheDesktopsFonts()
{
    QFont font;
    setFontPixels(font, 14);
    QCOMPARE(font.pixelSize(), 21);
    QFont ofTheDesktop;
    ofTheDesktop.setPointSizeF(10.5); // 14 pixels at 96 dots per inch.
    QCOMPARE(QFontInfo(ofTheDesktop).pixelSize(), 21);
}

} // namespace penwick

int main(int argc, char **argv)
{
    // Read when the application is constructed. Otherwise the resolution scales all pixels.
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qputenv("QT_FONT_DPI", "144");
    QApplication app(argc, argv);
    penwick::SystemFontsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SystemFontsTest.moc"
