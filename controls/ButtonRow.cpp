#include "controls/ButtonRow.h"

#include "controls/VerbatimText.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>

namespace penwick {

namespace {

constexpr int kSpacing = 8;
constexpr int kSideMargin = 20;
constexpr int kMargin = 12;
constexpr int kSymbolWidth = 36;

} // namespace

ButtonRow::ButtonRow(const QList<QPushButton *> &buttons, QWidget *parent)
    : QWidget(parent)
    , m_buttons(buttons)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(kSideMargin, kMargin, kSideMargin, kMargin);
    row->setSpacing(kSpacing);
    for (QPushButton *button : m_buttons) {
        if (button == m_buttons.constLast())
            row->addStretch();
        row->addWidget(button);
    }
}

void ButtonRow::setText(QPushButton *button, const QString &text)
{
    m_texts.insert(button, text);
    button->setAccessibleName(text);
    setCompact(m_isCompact);
    fit();
}

void ButtonRow::setHint(QPushButton *button, const QString &hint)
{
    m_hints.insert(button, hint);
    button->setAccessibleDescription(hint);
    setCompact(m_isCompact);
}

void ButtonRow::setShown(QPushButton *button, bool isShown)
{
    button->setVisible(isShown);
    fit();
}

void ButtonRow::setCompact(bool isCompact)
{
    m_isCompact = isCompact;
    for (QPushButton *button : std::as_const(m_buttons)) {
        const bool hasText = !isCompact || button == m_buttons.constLast();
        const QString text = m_texts.value(button);
        setVerbatimText(button, hasText ? text : QString());
        button->setToolTip(verbatimToolTip(hasText ? QString() : text, m_hints.value(button)));
        button->setMinimumWidth(hasText ? 0 : kSymbolWidth);
        button->setMaximumWidth(hasText ? QWIDGETSIZE_MAX : kSymbolWidth);
    }
}

/// The width that the row needs while every button shows its text.
int ButtonRow::widthWithTexts() const
{
    int width = 2 * kSideMargin;
    for (const QPushButton *button : m_buttons)
        if (!button->isHidden())
            width += button->sizeHint().width() + kSpacing;
    return width;
}

void ButtonRow::fit()
{
    // The size hints depend on what the buttons show, so measure them with their texts.
    if (m_isCompact)
        setCompact(false);
    if (widthWithTexts() > width())
        setCompact(true);
}

QSize ButtonRow::minimumSizeHint() const
{
    return {0, QWidget::minimumSizeHint().height()};
}

void ButtonRow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fit();
}

void ButtonRow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fit();
}

} // namespace penwick
