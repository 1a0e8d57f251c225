#include "command/ReadablePlaceholder.h"

#include "controls/ColorContrast.h"

#include <QLineEdit>

namespace penwick {

QColor quietInk(const QColor &ink, const QColor &ground)
{
    constexpr double kShareOfGround = 0.45;
    constexpr double kReadable = 4.5;
    return colorWithContrast(mixedColor(ink, ground, kShareOfGround), ink, ground, kReadable);
}

void makePlaceholderReadable(QLineEdit *field)
{
    QPalette palette = field->palette();
    const QColor ink = quietInk(palette.color(QPalette::Text), palette.color(QPalette::Base));
    if (palette.color(QPalette::PlaceholderText) == ink)
        return; // Setting the palette again would notify the field again.
    palette.setColor(QPalette::PlaceholderText, ink);
    field->setPalette(palette);
}

} // namespace penwick
