#include "controls/ElidedLabel.h"

#include "text/CutText.h"

#include <QPainter>

namespace penwick {

namespace {

bool breaksLine(QChar c)
{
    switch (c.unicode()) {
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case u'\u0085':
    case u'\u2028':
    case u'\u2029':
        return true;
    default:
        return false;
    }
}

} // namespace

ElidedLabel::ElidedLabel(QWidget *parent)
    : QLabel(parent)
{
    // Show markup in a message literally; do not interpret it.
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void ElidedLabel::setLine(const QString &text)
{
    QString line = cutText(text, kLongestShown);
    line.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar &c : line)
        if (breaksLine(c))
            c = u' ';
    if (buddy() != nullptr)
        line.replace(u'&', QStringLiteral("&&")); // Would mark an access key.
    setText(line);
}

QString ElidedLabel::displayedText() const
{
    QString line = text();
    if (buddy() != nullptr)
        line.replace(QStringLiteral("&&"), QStringLiteral("&"));
    return fontMetrics().elidedText(line, Qt::ElideRight, contentsRect().width());
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setPen(textColor());
    // Position the text by its baseline: lines in different scripts differ in height, and labels
    // side by side must stay aligned.
    const QFontMetrics metrics = fontMetrics();
    const QString shown = displayedText();
    const QRect area = contentsRect();
    const int left = layoutDirection() == Qt::LeftToRight
                         ? area.left()
                         : area.right() + 1 - metrics.horizontalAdvance(shown);
    const int top = area.top() + (area.height() - metrics.height()) / 2;
    painter.drawText(left, top + metrics.ascent(), shown);
}

QColor ElidedLabel::textColor() const
{
    return palette().color(QPalette::WindowText);
}

} // namespace penwick
