#include "platform/json/JsonText.h"

#include "platform/json/JsonEscape.h"

#include <QLocale>
#include <QStringDecoder>

// nlohmann/json is strict about the grammar, UTF-8 and surrogates, exact for 64-bit integers, and
// its event interface lets the reader limit the depth. The alternatives do not fit: QJsonDocument
// accepts unpaired surrogates and sorts members in its own order, RapidJSON accepts an unpaired low
// surrogate.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <vector>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString decoded(const std::string &utf8)
{
    // QString::fromUtf8 would drop a leading U+FEFF, which is part of the text here.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
}

/// Builds a `JsonValue` from the parser's events. An event that returns false ends the parsing.
class TreeBuilder final
{
public:
    // NOLINTBEGIN(readability-identifier-naming): the parser's interface requires these names.
    JsonValue takeResult() { return std::move(m_result); }

    const JsonError &error() const { return m_error; }

    /// True when there is no result because the parser met a number out of the range of a double.
    bool stoppedAtHugeNumber() const { return m_stoppedAtHugeNumber; }

    bool null() { return add(nullptr); }

    bool boolean(bool value) { return add(value); }

    bool number_integer(std::int64_t value) { return add(qint64{value}); }

    bool number_unsigned(std::uint64_t value) { return add(quint64{value}); }

    bool number_float(double value, const std::string &) { return add(value); }

    bool string(std::string &value) { return add(decoded(value)); }

    bool binary(const std::vector<std::uint8_t> &) { return false; } // Never sent for JSON text.

    bool key(std::string &name)
    {
        m_open.back().name = decoded(name);
        return true;
    }

    bool start_object(std::size_t) { return open(true); }

    bool start_array(std::size_t) { return open(false); }

    bool end_object() { return close(); }

    bool end_array() { return close(); }

    bool parse_error(std::size_t position, const std::string &, const nlohmann::json::exception &e)
    {
        constexpr int kNumberOverflow = 406;
        m_stoppedAtHugeNumber = e.id == kNumberOverflow;
        m_error.byteOffset = std::max(qint64{0}, static_cast<qint64>(position) - 1);
        return false;
    }

    // NOLINTEND(readability-identifier-naming)

private:
    struct Container
    {
        bool isObject = false;
        JsonObject members;
        QString name; ///< The name of the member that is being read.
        JsonArray items;
    };

    bool open(bool isObject)
    {
        if (m_open.size() >= JsonText::kMaximumDepth) {
            m_error.kind = JsonError::Kind::TooDeep;
            return false;
        }
        m_open.emplace_back().isObject = isObject;
        return true;
    }

    bool close()
    {
        Container closed = std::move(m_open.back());
        m_open.pop_back();
        return closed.isObject ? add(std::move(closed.members)) : add(std::move(closed.items));
    }

    bool add(JsonValue value)
    {
        if (m_open.empty())
            m_result = std::move(value);
        else if (m_open.back().isObject)
            m_open.back().members.insert(m_open.back().name, value);
        else
            m_open.back().items.append(std::move(value));
        return true;
    }

    JsonValue m_result;
    JsonError m_error;
    bool m_stoppedAtHugeNumber = false;
    std::vector<Container> m_open;
};

/// Writes the pretty-printed form.
class TreeWriter final
{
public:
    enum class Form { Pretty, Line };

    explicit TreeWriter(Form form)
        : m_isPretty(form == Form::Pretty)
    {
    }

    QByteArray takeText() { return std::move(m_text); }

    void write(const JsonValue &value)
    {
        std::visit([this](const auto &data) { writeData(data); }, value.data());
    }

private:
    void writeData(std::monostate) { m_text += "null"; }

    void writeData(bool value) { m_text += value ? "true" : "false"; }

    void writeData(qint64 value) { m_text += QByteArray::number(value); }

    void writeData(quint64 value) { m_text += QByteArray::number(value); }

    void writeData(double value)
    {
        m_text += std::isfinite(value)
                      ? QByteArray::number(value, 'g', QLocale::FloatingPointShortest)
                      : "null"_ba;
    }

    void writeData(const QString &text)
    {
        m_text += '"';
        const QStringView all(text);
        qsizetype plainFrom = 0;
        for (qsizetype i = 0; i < all.size(); ++i) {
            if (all[i].isHighSurrogate() && i + 1 < all.size() && all[i + 1].isLowSurrogate()) {
                ++i;
                continue;
            }
            const QByteArray escape = escaped(all[i].unicode());
            if (escape.isEmpty())
                continue;
            m_text += all.sliced(plainFrom, i - plainFrom).toUtf8();
            m_text += escape;
            plainFrom = i + 1;
        }
        m_text += all.sliced(plainFrom).toUtf8();
        m_text += '"';
    }

    void writeData(const JsonArray &array)
    {
        const auto writeItem = [this](const JsonValue &item) { write(item); };
        writeItems('[', array, writeItem, ']');
    }

    void writeData(const JsonObject &object)
    {
        struct Member
        {
            QByteArray order;
            const QString *name;
            const JsonValue *value;
        };

        // The map is sorted by UTF-16 code units, which differs from UTF-8 order beyond U+FFFF.
        std::vector<Member> members;
        for (auto it = object.cbegin(); it != object.cend(); ++it)
            members.push_back({it.key().toUtf8(), &it.key(), &it.value()});
        std::sort(members.begin(), members.end(), [](const Member &a, const Member &b) {
            return a.order < b.order;
        });
        writeItems(
            '{',
            members,
            [this](const Member &member) {
                writeData(*member.name);
                m_text += m_isPretty ? " : " : ": ";
                write(*member.value);
            },
            '}');
    }

    template <typename Items, typename WriteItem>
    void writeItems(char opening, const Items &items, WriteItem writeItem, char closing)
    {
        m_text += opening;
        if (!items.empty()) {
            ++m_depth;
            bool isFirst = true;
            for (const auto &item : items) {
                if (!isFirst)
                    m_text += m_isPretty ? "," : ", ";
                isFirst = false;
                breakLine();
                writeItem(item);
            }
            --m_depth;
            breakLine();
        }
        m_text += closing;
    }

    void breakLine()
    {
        if (!m_isPretty)
            return;
        m_text += '\n';
        m_text.append(m_depth * 2, ' ');
    }

    /// Returns the escape for the unit; empty if it is written as it is.
    [[nodiscard]] QByteArray escaped(char16_t unit) const
    {
        if (unit == u'/' && m_isPretty)
            return "\\/"_ba;
        if (unit < kJsonEscapeLetters.size() && kJsonEscapeLetters[unit] != 0)
            return "\\"_ba + kJsonEscapeLetters[unit];
        if (unit < 0x20)
            return "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
        return QChar::isSurrogate(unit) ? "\xEF\xBF\xBD"_ba : QByteArray();
    }

    bool m_isPretty;
    QByteArray m_text;
    qsizetype m_depth = 0;
};

bool parse(QByteArrayView text, TreeBuilder &builder)
{
    return nlohmann::json::sax_parse(text.begin(), text.end(), &builder);
}

bool isHugeNumber(QByteArrayView text)
{
    TreeBuilder builder;
    return !parse(text, builder) && builder.stoppedAtHugeNumber();
}

/// The offset after the string that begins at `start`.
qsizetype endOfString(QByteArrayView text, qsizetype start)
{
    qsizetype i = start + 1;
    while (i < text.size() && text[i] != '"')
        i += text[i] == '\\' ? 2 : 1;
    return std::min(i + 1, text.size());
}

qsizetype endOfDigits(QByteArrayView text, qsizetype start)
{
    qsizetype i = start;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9')
        ++i;
    return i;
}

bool isOneOf(QByteArrayView text, qsizetype at, QByteArrayView bytes)
{
    return at < text.size() && bytes.contains(text[at]);
}

/// The offset after the longest number that begins at `start`, which is where the parser ends it,
/// too; `start` itself if no number begins there.
qsizetype endOfNumber(QByteArrayView text, qsizetype start)
{
    const qsizetype first = start + (isOneOf(text, start, "-") ? 1 : 0);
    qsizetype end = endOfDigits(text, first);
    if (end == first)
        return start;
    if (isOneOf(text, end, "."))
        end = std::max(end, endOfDigits(text, end + 1));
    if (isOneOf(text, end, "eE")) {
        const qsizetype exponent = end + (isOneOf(text, end + 1, "+-") ? 2 : 1);
        end = std::max(end, endOfDigits(text, exponent));
    }
    return end;
}

/// Returns the text with every number out of the range of a double replaced by null and blanks of
/// the same length. The parser fails at such a number wherever it is.
QByteArray withoutHugeNumbers(QByteArrayView text)
{
    QByteArray changed = text.toByteArray();
    qsizetype i = 0;
    while (i < text.size()) {
        const qsizetype start = i;
        if (text[i] == '"') {
            i = endOfString(text, i);
            continue;
        }
        i = endOfNumber(text, start);
        if (i == start)
            ++i;
        else if (isHugeNumber(text.sliced(start, i - start)))
            changed.replace(start, i - start, "null"_ba.leftJustified(i - start));
    }
    return changed;
}

} // namespace

QString JsonError::description() const
{
    const auto at = [this](const QString &what) {
        return u"%1 near byte %2"_s.arg(what).arg(byteOffset);
    };
    switch (kind) {
    case Kind::InvalidUtf8:
        return at(u"The text is not valid UTF-8"_s);
    case Kind::TooDeep:
        return u"The JSON is nested too deeply"_s;
    case Kind::Syntax:
        break;
    }
    return at(u"The text is not valid JSON"_s);
}

tl::expected<JsonValue, JsonError> JsonText::read(QByteArrayView text)
{
    // The parser treats a NUL as the end of its input and would ignore what follows.
    if (const qsizetype nul = text.indexOf('\0'); nul >= 0)
        return tl::unexpected(JsonError{JsonError::Kind::Syntax, nul});
    TreeBuilder builder;
    if (parse(text, builder))
        return builder.takeResult();
    JsonError error = builder.error();
    if (builder.stoppedAtHugeNumber()) {
        TreeBuilder second;
        if (parse(withoutHugeNumbers(text), second))
            return second.takeResult();
        error = second.error();
    }
    if (error.kind == JsonError::Kind::Syntax && !text.isValidUtf8())
        error.kind = JsonError::Kind::InvalidUtf8;
    return tl::unexpected(error);
}

QByteArray JsonText::write(const JsonValue &value)
{
    TreeWriter writer(TreeWriter::Form::Pretty);
    writer.write(value);
    return writer.takeText();
}

QByteArray JsonText::writeLine(const JsonValue &value)
{
    TreeWriter writer(TreeWriter::Form::Line);
    writer.write(value);
    return writer.takeText();
}

} // namespace penwick
