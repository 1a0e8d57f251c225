#include "encoding/Preview.h"

namespace penwick {

namespace {

constexpr qsizetype kLines = 3;
constexpr qsizetype kLineUnits = 60;
constexpr qsizetype kLead = 20; // Units that are kept before a character far into its line.

} // namespace

void Preview::add(std::u16string_view units)
{
    for (const char16_t unit : units) {
        if (m_lines.size() == kLines)
            return;
        if (unit == u'\n' || unit == u'\r') {
            endLine();
            continue;
        }
        if (!m_isFound && m_line.size() == kLineUnits)
            m_line = m_line.last(kLead);
        m_isFound = m_isFound || unit >= 0x80;
        if (m_line.size() < kLineUnits)
            m_line += QChar(unit);
    }
}

QStringList Preview::lines() const
{
    Preview ended = *this;
    ended.endLine();
    return ended.m_lines;
}

void Preview::endLine()
{
    if (m_isFound && m_lines.size() < kLines && !m_line.trimmed().isEmpty()) {
        if (m_line.back().isHighSurrogate())
            m_line.chop(1);
        m_lines += m_line;
    }
    m_line.clear();
}

} // namespace penwick
