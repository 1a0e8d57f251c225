#include "view/HtmlText.h"

#include <QTextDocumentFragment>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Stands for a line feed while the toolkit replaces the character references: it would make a
/// paragraph of each line. HTML does not permit this character.
constexpr QChar kLineFeed(u'\uFDD2');

bool isIn(QStringView name, std::initializer_list<QStringView> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// True for elements that begin and end a line.
bool isBlock(QStringView name)
{
    static const QStringList kNames =
        u"address article aside blockquote body caption center dd dialog div dl dt fieldset "
        "figcaption figure footer form h1 h2 h3 h4 h5 h6 header hr html legend li main nav ol "
        "option p pre section summary table tbody tfoot thead tr ul"_s.split(u' ');
    return std::binary_search(kNames.cbegin(), kNames.cend(), name);
}

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\n' || c == u'\t' || c == u'\r' || c == u'\f';
}

/// Removes the markup; leaves the character references.
class MarkupRemover final
{
public:
    explicit MarkupRemover(QStringView html)
        : m_html(html)
    {
    }

    QString text()
    {
        while (m_at < m_html.size()) {
            const QChar next = m_at + 1 < m_html.size() ? m_html[m_at + 1] : QChar();
            const bool isTag = next.isLetter() || next == u'/' || next == u'!' || next == u'?';
            if (m_html[m_at] == u'<' && isTag)
                takeTag();
            else
                take(m_html[m_at++]);
        }
        return std::move(m_text);
    }

private:
    void take(QChar c)
    {
        if (m_preformatted > 0) {
            if (c != u'\r')
                append(c == u'\n' ? kLineFeed : c);
        } else if (isSpace(c)) {
            m_hasSpace = true;
        } else {
            append(c);
        }
    }

    /// Appends a character after the line break or the blank that is due.
    void append(QChar c)
    {
        if (m_needsLine)
            m_text += kLineFeed;
        else if (m_hasSpace && !isAtLineStart() && m_preformatted == 0)
            m_text += u' ';
        m_needsLine = false;
        m_hasSpace = false;
        if (c == u'<')
            m_text += u"&lt;";
        else
            m_text += c;
    }

    [[nodiscard]] bool isAtLineStart() const
    {
        return m_text.isEmpty() || m_text.back() == kLineFeed || m_text.back() == u'\t';
    }

    void takeTag()
    {
        if (m_html.sliced(m_at).startsWith(u"<!--")) {
            skipBehind(u"-->");
            return;
        }
        const bool isEnd = m_html[m_at + 1] == u'/';
        const qsizetype start = m_at + (isEnd ? 2 : 1);
        qsizetype end = start;
        while (end < m_html.size() && m_html[end].isLetterOrNumber())
            ++end;
        const QString name = m_html.sliced(start, end - start).toString().toLower();
        m_at = end;
        skipAttributes();
        if (!isEnd && isIn(name, {u"script", u"style", u"title", u"template"}))
            skipBehind(u"</"_s + name);
        else
            takeElement(name, isEnd);
    }

    void takeElement(QStringView name, bool isEnd)
    {
        if (name == u"br" && !isEnd) {
            m_hasSpace = false;
            append(kLineFeed);
        }
        if (isIn(name, {u"td", u"th"}) && !isEnd && std::exchange(m_isInRow, true)) {
            m_hasSpace = false;
            append(u'\t');
        }
        if (name == u"tr")
            m_isInRow = false;
        if (name == u"pre")
            m_preformatted = std::max(0, m_preformatted + (isEnd ? -1 : 1));
        if (isBlock(name)) {
            m_needsLine = !isAtLineStart() || m_needsLine;
            m_hasSpace = false;
        }
    }

    /// Goes behind the tag's end. A quoted value may contain the character that ends a tag.
    void skipAttributes()
    {
        QChar quote;
        for (; m_at < m_html.size(); ++m_at) {
            const QChar c = m_html[m_at];
            if (quote.isNull() && c == u'>')
                break;
            if (quote.isNull() && (c == u'"' || c == u'\''))
                quote = c;
            else if (c == quote)
                quote = QChar();
        }
        ++m_at;
    }

    void skipBehind(QStringView end)
    {
        const qsizetype found = m_html.indexOf(end, m_at, Qt::CaseInsensitive);
        m_at = found < 0 ? m_html.size() : found + end.size();
        if (found >= 0 && end.startsWith(u"</"))
            skipAttributes();
    }

    QStringView m_html;
    qsizetype m_at = 0;
    QString m_text;
    int m_preformatted = 0;   // Open elements that keep their white space.
    bool m_needsLine = false; // The next text begins a line.
    bool m_hasSpace = false;  // White space came before the next text.
    bool m_isInRow = false;   // The table row has a cell already.
};

} // namespace

QString textOfHtml(QStringView html)
{
    // The toolkit also converts whole pages, but takes time that grows with the square of their
    // depth and of their style rules, and reads the files that these name.
    constexpr QChar kMark(u'|'); // Keeps the white space at both ends.
    QString text = QTextDocumentFragment::fromHtml(u"<pre>"_s + kMark + MarkupRemover(html).text() +
                                                   kMark + u"</pre>"_s)
                       .toPlainText();
    text = text.sliced(1).chopped(1);
    return text.replace(kLineFeed, u'\n');
}

} // namespace penwick
