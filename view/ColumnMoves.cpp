#include "view/ColumnMoves.h"

#include <algorithm>

namespace penwick {

namespace {

struct KeyMove
{
    Qt::Key key;
    CaretMove move;
};

constexpr KeyMove kKeyMoves[] = {{Qt::Key_Left, CaretMove::Left},
                                 {Qt::Key_Right, CaretMove::Right},
                                 {Qt::Key_Up, CaretMove::Up},
                                 {Qt::Key_Down, CaretMove::Down},
                                 {Qt::Key_Home, CaretMove::RowStart},
                                 {Qt::Key_End, CaretMove::RowEnd},
                                 {Qt::Key_PageUp, CaretMove::PageUp},
                                 {Qt::Key_PageDown, CaretMove::PageDown}};

} // namespace

std::optional<CaretMove> columnMoveFor(const QKeyEvent &event)
{
    if ((event.modifiers() & ~Qt::KeypadModifier) != (Qt::AltModifier | Qt::ShiftModifier))
        return std::nullopt;
    for (const KeyMove &binding : kKeyMoves)
        if (event.key() == binding.key)
            return binding.move;
    return std::nullopt;
}

bool isColumnMove(CaretMove move)
{
    return std::any_of(std::begin(kKeyMoves), std::end(kKeyMoves), [move](const KeyMove &binding) {
        return binding.move == move;
    });
}

ColumnPlace
movedPlace(const Text &text, ColumnPlace from, CaretMove move, const ColumnMoveStyle &style)
{
    const auto inLine = [&](qint64 distance) {
        return ColumnPlace{std::clamp<qint64>(from.line + distance, 0, text.metrics().lineBreaks()),
                           from.column};
    };
    switch (move) {
    case CaretMove::Left:
        return {from.line, columnBefore(text, from, style.tabWidth)};
    case CaretMove::Right:
        return {from.line, columnAfter(text, from, style.tabWidth)};
    case CaretMove::Up:
        return inLine(-1);
    case CaretMove::Down:
        return inLine(1);
    case CaretMove::PageUp:
        return inLine(-style.pageRows);
    case CaretMove::PageDown:
        return inLine(style.pageRows);
    case CaretMove::RowStart:
        return {from.line, 0};
    case CaretMove::RowEnd:
        return {from.line,
                lastStop(text,
                         contentOfLine(text, from.line),
                         {kNoColumnLimit, kNoColumnLimit},
                         style.tabWidth)
                    .column};
    default:
        return from;
    }
}

} // namespace penwick
