#include "view/InvisibleMarks.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QPolygonF>

#include <algorithm>

namespace penwick::invisible {

namespace {

constexpr char16_t kDelete = 0x7F;
constexpr char16_t kC1End = 0xA0;

constexpr QStringView kC0Labels[] = {
    u"NUL", u"SOH", u"STX", u"ETX", u"EOT", u"ENQ", u"ACK", u"BEL", u"BS",  u"",    u"",
    u"VT",  u"FF",  u"CR",  u"SO",  u"SI",  u"DLE", u"DC1", u"DC2", u"DC3", u"DC4", u"NAK",
    u"SYN", u"ETB", u"CAN", u"EM",  u"SUB", u"ESC", u"FS",  u"GS",  u"RS",  u"US",
};

constexpr QStringView kC1Labels[] = {
    u"PAD", u"HOP", u"BPH", u"NBH", u"IND", u"NEL", u"SSA", u"ESA", u"HTS", u"HTJ", u"VTS",
    u"PLD", u"PLU", u"RI",  u"SS2", u"SS3", u"DCS", u"PU1", u"PU2", u"STS", u"CCH", u"MW",
    u"SPA", u"EPA", u"SOS", u"SGC", u"SCI", u"CSI", u"ST",  u"OSC", u"PM",  u"APC",
};

/// U+FDD0 to U+FDEF, the contiguous noncharacters of the Basic Multilingual Plane.
constexpr char16_t kFirstNoncharacter = 0xFDD0;
constexpr QStringView kNoncharacters[] = {
    u"FDD0", u"FDD1", u"FDD2", u"FDD3", u"FDD4", u"FDD5", u"FDD6", u"FDD7",
    u"FDD8", u"FDD9", u"FDDA", u"FDDB", u"FDDC", u"FDDD", u"FDDE", u"FDDF",
    u"FDE0", u"FDE1", u"FDE2", u"FDE3", u"FDE4", u"FDE5", u"FDE6", u"FDE7",
    u"FDE8", u"FDE9", u"FDEA", u"FDEB", u"FDEC", u"FDED", u"FDEE", u"FDEF",
};

constexpr char16_t kIdeographicSpace = 0x3000;

struct UnitRange
{
    char16_t first;
    char16_t last;
};

constexpr UnitRange kMarked[] = {
    {0x00A0, 0x00A0}, // No-break space.
    {0x00AD, 0x00AD}, // Soft hyphen.
    {0x034F, 0x034F}, // Combining grapheme joiner.
    {0x061C, 0x061C}, // Arabic letter mark.
    {0x115F, 0x1160}, // Hangul fillers.
    {0x180E, 0x180E}, // Mongolian vowel separator.
    {0x2000, 0x200B}, // Blanks of a given width; zero-width space.
    {0x200E, 0x200F}, // Direction marks.
    {0x202A, 0x202F}, // Directional embeddings; narrow no-break space.
    {0x205F, 0x206F}, // Mathematical blank, word joiner, invisible operators, isolates.
    {0x3164, 0x3164}, // Hangul filler.
    {0xFEFF, 0xFEFF}, // Byte order mark.
    {0xFFA0, 0xFFA0}, // Half-width Hangul filler.
    {0xFFF9, 0xFFFB}, // Interlinear annotations.
};

} // namespace

QStringView label(char16_t unit)
{
    constexpr char16_t kLineSeparator = 0x2028;
    constexpr char16_t kParagraphSeparator = 0x2029;
    constexpr char16_t kObject = 0xFFFC; // Reserved by the layout engine for embedded objects.
    if (unit < std::size(kC0Labels))
        return kC0Labels[unit];
    if (unit < kDelete)
        return {};
    if (unit == kDelete)
        return u"DEL";
    if (unit < kC1End)
        return kC1Labels[unit - kDelete - 1];
    if (unit == kLineSeparator)
        return u"LS";
    if (unit == kParagraphSeparator)
        return u"PS";
    if (unit < kFirstNoncharacter)
        return {};
    if (unit < kFirstNoncharacter + std::size(kNoncharacters))
        return kNoncharacters[unit - kFirstNoncharacter];
    if (unit == kObject)
        return u"OBJ";
    if (unit == 0xFFFE)
        return u"FFFE";
    return unit == 0xFFFF ? QStringView(u"FFFF") : QStringView();
}

bool isMarked(char16_t unit)
{
    return unit >= kC1End &&
           std::any_of(std::begin(kMarked), std::end(kMarked), [unit](const UnitRange &range) {
               return unit >= range.first && unit <= range.last;
           });
}

bool isBlank(char16_t unit)
{
    return unit == u'\t' || unit == kIdeographicSpace;
}

qsizetype lengthWithoutTrailingBlanks(QStringView line)
{
    const auto isAnyBlank = [](QChar c) {
        return c == u' ' || isBlank(c.unicode()) || isMarked(c.unicode());
    };
    qsizetype length = line.size();
    while (length > 0 && isAnyBlank(line[length - 1]))
        --length;
    return length;
}

void paintLabel(QPainter &painter,
                QStringView label,
                const QRectF &cell,
                const QFont &font,
                const QColor &color)
{
    constexpr qreal kSmall = 0.55;
    constexpr qreal kRadius = 2;
    const QRectF frame = cell.adjusted(1, cell.height() / 6, -1, -cell.height() / 6);
    QFont small = font;
    small.setPixelSize(std::max(1, qRound(QFontInfo(font).pixelSize() * kSmall)));
    const qreal width = QFontMetricsF(small).horizontalAdvance(label.toString());
    const qreal room = frame.width() - kRadius;
    if (width > room)
        small.setPixelSize(std::max(1, static_cast<int>(small.pixelSize() * room / width)));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, kRadius, kRadius);
    painter.setFont(small);
    painter.drawText(frame, Qt::AlignCenter | Qt::TextDontClip, label.toString());
    painter.restore();
}

void paintMark(QPainter &painter, const QRectF &cell, const QColor &color)
{
    constexpr qreal kMinBracketWidth = 3; // A narrower bracket would look like a dot.
    const qreal bottom = cell.bottom() - 2;
    if (cell.width() < kMinBracketWidth) {
        const qreal x = cell.left();
        const qreal top = cell.top() + cell.height() / 6;
        painter.fillRect(QRectF(x, top, 1, bottom - top), color);
        painter.fillRect(QRectF(x - 2, top, 5, 2), color);
        return;
    }
    const qreal left = cell.left() + 1;
    const qreal right = cell.right() - 1;
    const qreal top = bottom - cell.height() / 5;
    painter.fillRect(QRectF(left, bottom - 1, right - left, 1), color);
    painter.fillRect(QRectF(left, top, 1, bottom - 1 - top), color);
    painter.fillRect(QRectF(right - 1, top, 1, bottom - 1 - top), color);
}

void paintLineEnd(QPainter &painter, bool isCrLf, const QRectF &cell, const QColor &color)
{
    const qreal head = std::max<qreal>(2, cell.width() / 3);
    const QRectF area = cell.adjusted(1, cell.height() / 4, -1, -cell.height() / 4);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1));
    if (isCrLf) {
        const QPointF corner(area.right(), area.bottom() - head);
        const QPointF tip(area.left(), corner.y());
        painter.drawPolyline(QPolygonF{{area.right(), area.top()}, corner, tip});
        painter.drawPolyline(QPolygonF{tip + QPointF(head, -head), tip, tip + QPointF(head, head)});
    } else {
        const QPointF tip(area.center().x(), area.bottom());
        painter.drawLine(QPointF(tip.x(), area.top()), tip);
        painter.drawPolyline(
            QPolygonF{tip + QPointF(-head, -head), tip, tip + QPointF(head, -head)});
    }
    painter.restore();
}

void paintBlank(QPainter &painter, char16_t unit, const QRectF &cell, const QColor &color)
{
    const QPointF center = cell.center();
    if (unit == u' ') {
        painter.fillRect(QRectF(center.x() - 1, center.y(), 2, 2), color);
        return;
    }
    painter.save();
    painter.setPen(QPen(color, 1));
    painter.setBrush(Qt::NoBrush);
    if (unit == u'\t') {
        constexpr qreal kHead = 3;
        const QPointF tip(cell.right() - 2, center.y());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawLine(QPointF(cell.left() + 1, center.y()), tip);
        painter.drawLine(tip - QPointF(kHead, kHead), tip);
        painter.drawLine(tip - QPointF(kHead, -kHead), tip);
    } else {
        const qreal side = std::min(cell.width(), cell.height()) * 2 / 3;
        painter.drawRect(QRectF(center - QPointF(side, side) / 2, QSizeF(side, side)));
    }
    painter.restore();
}

} // namespace penwick::invisible
