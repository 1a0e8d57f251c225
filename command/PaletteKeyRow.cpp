#include "command/PaletteKeyRow.h"

#include "command/KeyRecorder.h"
#include "controls/DetailPane.h"
#include "controls/ElidedButton.h"
#include "controls/ElidedLabel.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

PaletteKeyRow::PaletteKeyRow(SetKey setKey, QWidget *parent)
    : QWidget(parent)
    , m_setKey(std::move(setKey))
    , m_offer(new ElidedButton)
    , m_message(new ElidedLabel)
    , m_field(new KeyRecorder)
{
    constexpr int kMargin = 4;
    m_offer->setObjectName(u"paletteKeyOffer"_s);
    m_offer->setFocusPolicy(Qt::NoFocus);
    m_offer->setAutoRaise(true);
    setVerbatimText(m_offer, wording::text(u"palette.setKey"_s, {u"Ctrl+K"_s}));
    m_message->setObjectName(u"paletteKeyMessage"_s);
    m_field->setObjectName(u"paletteKey"_s);
    m_field->setPlaceholderText(wording::text(u"macro.manage.keyHint"_s));
    m_field->installEventFilter(this);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->addWidget(m_offer);
    layout->addWidget(m_message, 2);
    layout->addWidget(m_field, 1);
    connect(m_offer, &QAbstractButton::clicked, this, &PaletteKeyRow::record);
    connect(m_field, &KeyRecorder::keyPressed, this, &PaletteKeyRow::take);
    setFixedHeight(m_field->sizeHint().height() + 2 * kMargin);
    showOffer();
}

void PaletteKeyRow::setRow(const PaletteRow &row)
{
    m_row = row;
    showOffer();
}

bool PaletteKeyRow::record()
{
    if (m_row.kind != PaletteRow::Kind::Macro)
        return false;
    m_offer->hide();
    m_message->show();
    m_field->setKey(QKeySequence::fromString(m_row.atEnd, QKeySequence::NativeText));
    m_field->setAccessibleName(wording::text(u"palette.keyOf"_s, {m_row.title}));
    setTitle(m_message, wording::text(u"palette.keyOf"_s, {m_row.title}));
    m_field->show();
    m_field->setFocus(Qt::PopupFocusReason);
    return true;
}

void PaletteKeyRow::take(const QKeySequence &key)
{
    const QString reason = m_setKey(m_row, key);
    if (!reason.isEmpty())
        return say(wording::text(u"macro.manage.keyRefused"_s,
                                 {key.toString(QKeySequence::NativeText), reason}));
    m_row.atEnd = key.toString(QKeySequence::NativeText);
    Q_EMIT keyChanged(m_row.id, key);
    Q_EMIT ended();
}

void PaletteKeyRow::say(const QString &text)
{
    setTitle(m_message, text);
    QAccessibleEvent alert(m_message, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void PaletteKeyRow::showOffer()
{
    const bool isMacro = m_row.kind == PaletteRow::Kind::Macro;
    setTitle(m_message, wording::text(u"palette.keysOfMacros"_s, {u"Ctrl+K"_s}));
    m_message->setVisible(!isMacro);
    m_field->hide();
    m_offer->setVisible(isMacro);
}

bool PaletteKeyRow::eventFilter(QObject * /*object*/, QEvent *event)
{
    if (event->type() == QEvent::FocusOut)
        showOffer();
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<const QKeyEvent *>(event)->key();
    const bool isEnd = key == Qt::Key_Escape || key == Qt::Key_Tab || key == Qt::Key_Backtab;
    if (isEnd && static_cast<const QKeyEvent *>(event)->modifiers() == Qt::NoModifier) {
        Q_EMIT ended();
        return true;
    }
    return false;
}

} // namespace penwick
