#include "controls/ElidedButton.h"

#include <algorithm>

namespace penwick {

namespace {

// In heights of a line, which are about the width of a Japanese character.
constexpr int kLongest = 7;
constexpr int kShortest = 2;

} // namespace

ElidedButton::ElidedButton(QWidget *parent)
    : QToolButton(parent)
{
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

QSize ElidedButton::sizeHint() const
{
    const QSize whole = QToolButton::sizeHint();
    return {std::min(whole.width(), kLongest * fontMetrics().height()), whole.height()};
}

QSize ElidedButton::minimumSizeHint() const
{
    const QSize whole = QToolButton::sizeHint();
    return {std::min(whole.width(), kShortest * fontMetrics().height()), whole.height()};
}

} // namespace penwick
