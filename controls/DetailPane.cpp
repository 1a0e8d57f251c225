#include "controls/DetailPane.h"

#include "controls/ElidedLabel.h"
#include "controls/ProminentButton.h"
#include "controls/SymbolIcon.h"
#include "controls/TextField.h"
#include "controls/VerbatimText.h"

#include <QFrame>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace penwick {

namespace {

constexpr int kPaneMargin = 20;
constexpr int kPaneSpacing = 8;
constexpr int kGroupMargin = 12;
constexpr int kRowSpacing = 10;

QLabel *makePlainLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    return label;
}

void setFontScale(QLabel *label, qreal scale)
{
    QFont font = label->font();
    font.setBold(true);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
}

} // namespace

QVBoxLayout *makePaneLayout(QWidget *content)
{
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(kPaneMargin, kPaneMargin, kPaneMargin, kPaneMargin);
    layout->setSpacing(kPaneSpacing);
    return layout;
}

QScrollArea *makeScrollArea(QWidget *content)
{
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(content);
    area->setFocusPolicy(Qt::NoFocus);
    return area;
}

QFrame *makeGroup(QLayout *rows)
{
    auto *frame = new QFrame;
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setBackgroundRole(QPalette::Base);
    frame->setAutoFillBackground(true);
    rows->setContentsMargins(kGroupMargin, kGroupMargin, kGroupMargin, kGroupMargin);
    rows->setSpacing(kRowSpacing);
    frame->setLayout(rows);
    return frame;
}

QFrame *makeDivider()
{
    auto *line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setForegroundRole(QPalette::Mid);
    return line;
}

ElidedLabel *makeTitleLabel()
{
    constexpr qreal kScale = 1.4;
    auto *label = new ElidedLabel;
    setFontScale(label, kScale);
    return label;
}

void setTitle(ElidedLabel *label, const QString &title)
{
    label->setLine(title);
    label->setToolTip(verbatimToolTip(title));
}

QLabel *makeSectionLabel()
{
    QLabel *label = makePlainLabel();
    setFontScale(label, 1);
    label->setContentsMargins(0, kPaneSpacing, 0, 0);
    return label;
}

QLabel *makeFieldLabel()
{
    QLabel *label = makePlainLabel();
    label->setAlignment(Qt::AlignRight | Qt::AlignTop);
    return label;
}

TextField *makeTextField(const QString &name)
{
    auto *field = new TextField;
    field->setObjectName(name);
    return field;
}

QPushButton *makeActionButton(const QString &name, const QString &symbol)
{
    auto *button = new QPushButton(symbolIcon(symbol), QString());
    button->setObjectName(name);
    button->setAutoDefault(true); // Return presses the button while it has the focus.
    return button;
}

QPushButton *makeProminentButton(const QString &name)
{
    auto *button = new ProminentButton;
    button->setObjectName(name);
    button->setAutoDefault(true);
    return button;
}

} // namespace penwick
