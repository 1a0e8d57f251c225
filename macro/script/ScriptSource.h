#pragma once

#include <QString>
#include <QStringView>

#include <functional>
#include <utility>

namespace penwick {

/// A program text that is either stored as a whole or produced in pieces when it is read, so that a
/// large one need not be in memory a second time.
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
    /// \param write passes the pieces to the sink, in order; must pass the same ones at each call.
    ScriptSource(qsizetype length, std::function<void(const Sink &)> write)
        : m_length(length)
        , m_write(std::move(write))
    {
    }

    /// In UTF-16 code units.
    [[nodiscard]] qsizetype size() const { return m_length; }

    /// Passes the whole text to the sink, in one or more pieces.
    void write(const Sink &sink) const
    {
        if (m_write)
            m_write(sink);
        else
            sink(m_text);
    }

    /// Returns the whole text. Builds it at each call when it is not stored.
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
    std::function<void(const Sink &)> m_write; // Null when the text is stored in m_text.
};

} // namespace penwick
