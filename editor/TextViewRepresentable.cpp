#include "editor/TextViewRepresentable.h"

#include "editor/FindBar.h"
#include "editor/FindController.h"
#include "editor/TextView.h"
#include "editor/TransferBar.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace penwick {

namespace {

constexpr qreal kFontSize = 14; // Points.

QFont editorFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The name may be an alias, as "monospace", which in a list with others is passed over.
    const QString family = QFontInfo(font).family();
    // Without the first, Japanese may come in Chinese shapes; without the second, emoji in black.
    font.setFamilies(
        {family, QStringLiteral("Noto Sans Mono CJK JP"), QStringLiteral("Noto Color Emoji")});
    font.setPointSizeF(kFontSize);
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace

TextViewRepresentable::TextViewRepresentable(DocumentState *documentState,
                                             TextDocument *document,
                                             QWidget *parent)
    : QWidget(parent)
    , m_storage(document != nullptr ? document->sharedTextStorage()
                                    : std::make_shared<TextStorage>())
{
    makeTextView();
    layout()->addWidget(new TransferBar(document, this));
    m_coordinator = new Coordinator(m_textView, documentState, document, this);
    // After the coordinator has begun to listen: the caret that this places is the first thing the
    // view reports, and the counters of an opened file come from it.
    m_textView->setString(documentState->text());
    // Later, because the window that is to take the view does not exist yet.
    QMetaObject::invokeMethod(this, &TextViewRepresentable::focusTextView, Qt::QueuedConnection);
}

TextViewRepresentable::~TextViewRepresentable()
{
    delete m_findController;
    // The view must go before the storage that it shows; as a child it would go after it.
    delete m_textView;
}

void TextViewRepresentable::makeTextView()
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_textView = new TextView(m_storage.get(), this);
    m_textView->setFont(editorFont());
    m_textView->setFrameShape(QFrame::NoFrame);
    m_textView->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_textView->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    layout->addWidget(m_textView, 1);
    // Below the text, so that no line moves when the bar opens.
    m_findBar = new FindBar(this);
    m_findBar->hide();
    layout->addWidget(m_findBar);
    m_findController = new FindController(m_textView, m_findBar, this);
    setFocusProxy(m_textView);
}

void TextViewRepresentable::keyPressEvent(QKeyEvent *event)
{
    // The text has no use for Escape and lets it through.
    const bool isEscape = event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier;
    if (!isEscape || !m_findController->close())
        QWidget::keyPressEvent(event);
}

void TextViewRepresentable::focusTextView()
{
    if (!isWindow()) {
        m_textView->setFocus();
    }
}

} // namespace penwick
