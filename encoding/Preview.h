#pragma once

#include <QString>
#include <QStringList>

#include <string_view>

namespace penwick {

/// Collects the first lines of a decoded text by which a reader can judge the encoding: those from
/// the first one that is not all ASCII.
class Preview final
{
public:
    void add(std::u16string_view units);

    /// At most three lines of bounded length, without their ends. Blank lines are left out.
    [[nodiscard]] QStringList lines() const;

private:
    void endLine();

    QString m_line; // A part of the current line.
    QStringList m_lines;
    bool m_isFound = false; // A character that is not ASCII was found.
};

} // namespace penwick
