#include "controls/SymbolIcon.h"

#include "controls/ColorContrast.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

#include <utility>

// Q_INIT_RESOURCE must be outside the namespace. A static library's resources are not registered
// automatically.
static void registerSymbols()
{
    Q_INIT_RESOURCE(symbols);
}

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Renders the drawing on every request, since the palette may change and screens differ in scale.
class SymbolEngine final : public QIconEngine
{
public:
    SymbolEngine(QByteArray drawing, const QColor &color)
        : m_drawing(std::move(drawing))
        , m_color(color)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        QByteArray drawing = m_drawing;
        drawing.replace("currentColor", colorFor(mode).name(QColor::HexRgb).toLatin1());
        QSvgRenderer renderer(drawing);
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        renderer.render(painter, QRectF(rect));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    [[nodiscard]] QIconEngine *clone() const override
    {
        return new SymbolEngine(m_drawing, m_color);
    }

private:
    [[nodiscard]] QColor colorFor(QIcon::Mode mode) const
    {
        const QPalette palette = QApplication::palette();
        if (mode == QIcon::Disabled)
            return palette.color(QPalette::Disabled, QPalette::ButtonText);
        if (mode == QIcon::Selected) {
            constexpr double kDiscernible = 3;
            const QColor text = palette.color(QPalette::HighlightedText);
            return m_color.isValid()
                       ? colorWithContrast(m_color, text, readableHighlight(palette), kDiscernible)
                       : text;
        }
        return m_color.isValid() ? m_color : palette.color(QPalette::Active, QPalette::ButtonText);
    }

    QByteArray m_drawing;
    QColor m_color; ///< Invalid for the palette's colour.
};

} // namespace

QIcon symbolIcon(const QString &name)
{
    return symbolIcon(name, QColor());
}

QIcon symbolIcon(const QString &name, const QColor &color)
{
    registerSymbols();
    QFile file(u":/penwick/symbols/"_s + name + u".svg"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("There is no symbol %s.", qPrintable(name));
    return QIcon(new SymbolEngine(file.readAll(), color));
}

} // namespace penwick
