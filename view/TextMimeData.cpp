#include "view/TextMimeData.h"

#include "view/HtmlText.h"

#include <QGuiApplication>
#include <QUrl>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// Marks a text as a rectangle for other processes, too. Its data has no meaning.
constexpr QLatin1String kRectangleFormat("application/x-penwick-rectangle");

/// Returns the text of the page in `mime`; nothing when there is none or it would take long.
QString textOfHtmlIn(const QMimeData &mime)
{
    constexpr qsizetype kLongest = qsizetype{4} << 20U; // UTF-16 code units.
    const QString html = mime.html();
    return html.size() <= kLongest ? textOfHtml(html) : QString();
}

} // namespace

TextMimeData::TextMimeData(Text text, bool isRectangle)
    : m_text(std::move(text))
    , m_isRectangle(isRectangle)
{
}

QStringList TextMimeData::formats() const
{
    const QStringList plain{u"text/plain"_s};
    return m_isRectangle ? plain + QStringList{QString(kRectangleFormat)} : plain;
}

QVariant TextMimeData::retrieveData(const QString &mimeType, QMetaType type) const
{
    Q_UNUSED(type)
    if (m_isRectangle && mimeType == kRectangleFormat)
        return QByteArray("1");
    return mimeType == u"text/plain"_s ? QVariant(m_text.toString()) : QVariant();
}

bool offersText(const QMimeData *mime)
{
    return mime != nullptr && (mime->hasText() || mime->hasHtml());
}

bool offersRectangle(const QMimeData *mime)
{
    return mime != nullptr && mime->hasFormat(kRectangleFormat);
}

std::optional<Text> textOf(const QMimeData *mime)
{
    if (!offersText(mime))
        return std::nullopt;
    if (const auto *own = qobject_cast<const TextMimeData *>(mime))
        return own->value().isEmpty() ? std::nullopt : std::optional(own->value());
    // Decode the bytes here: QMimeData::text drops a leading U+FEFF as a byte-order mark.
    const QByteArray bytes = mime->data(u"text/plain;charset=utf-8"_s);
    if (!bytes.isEmpty()) {
        if (auto text = Text::fromUtf8(bytes))
            return *std::move(text);
    }
    QString text = mime->text();
    if (text.isEmpty())
        text = textOfHtmlIn(*mime);
    return text.isEmpty() ? std::nullopt : std::optional(Text(QStringView(text)));
}

void offerText(const Text &text, QClipboard::Mode mode, bool isRectangle)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    const bool isSupported = mode != QClipboard::Selection || clipboard->supportsSelection();
    if (isSupported && !text.isEmpty())
        clipboard->setMimeData(new TextMimeData(text, isRectangle), mode); // Takes ownership.
}

QStringList localFilesOf(const QMimeData *mime)
{
    QStringList paths;
    if (mime == nullptr || !mime->hasUrls())
        return paths;
    const QList<QUrl> urls = mime->urls();
    for (const QUrl &url : urls)
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}

} // namespace penwick
