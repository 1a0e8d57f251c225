#pragma once

#include <QString>
#include <QStringView>

#include <functional>
#include <utility>

namespace penwick {

/// A program text: one that is there as a whole, or one that is made piece by piece when somebody
/// takes it, so that a large one need not be in memory a second time.
class ScriptSource final
{
public:
    using Sink = std::function<void(QStringView)>;

    ScriptSource() = default;

    // NOLINTNEXTLINE(google-explicit-constructor): a text is a source.
    ScriptSource(QString text)
        : m_text(std::move(text))
        , m_length(m_text.size())
    {
    }

    /// \param length of all pieces together, in UTF-16 code units.
    /// \param write hands the pieces to the sink, in their order, the same ones at each call.
    ScriptSource(qsizetype length, std::function<void(const Sink &)> write)
        : m_length(length)
        , m_write(std::move(write))
    {
    }

    /// In UTF-16 code units.
    [[nodiscard]] qsizetype size() const { return m_length; }

    /// Hands all of the text to the sink, in one piece or several.
    void write(const Sink &sink) const
    {
        if (m_write)
            m_write(sink);
        else
            sink(m_text);
    }

    /// The whole; made at each call where it is not there.
    [[nodiscard]] QString text() const
    {
        if (!m_write)
            return m_text;
        QString text;
        text.reserve(m_length);
        m_write([&text](QStringView piece) { text += piece; });
        return text;
    }

    bool operator==(const ScriptSource &other) const { return text() == other.text(); }

private:
    QString m_text;
    qsizetype m_length = 0;
    std::function<void(const Sink &)> m_write; // Where the text is not there as a whole.
};

} // namespace penwick
