#pragma once

#include "macro/script/ScriptSource.h"

#include <QString>
#include <QStringView>

#include <cstddef>
#include <optional>
#include <vector>

namespace penwick {

/// Memory that the editor and the host share besides their connection, for texts that are too long
/// to send: each copy of a large document takes noticeable time. It is an unnamed file in which
/// each side writes to a range of its own. The positions of the texts are sent through the
/// connection. Neither side trusts what it reads.
///
/// The editor reads and writes the file but does not map it, so that no change of the host's to the
/// file can raise a signal in the editor.
class SharedTexts final
{
public:
    enum class Side { Editor, Host };

    /// Minimum length of a text, in UTF-16 code units. Shorter texts are not worth the system
    /// calls.
    static constexpr qsizetype kLeastLength = 32768;
    /// Size of the host's range, in bytes.
    static constexpr qint64 kHostRoom = qint64{1} << 30;

    /// \param descriptor of a file that both sides have open; not owned. -1 for none: then `put`
    /// and `get` return nothing.
    SharedTexts(int descriptor, Side side);
    SharedTexts(SharedTexts &&) = default;
    SharedTexts &operator=(SharedTexts &&) = default;
    SharedTexts(const SharedTexts &) = delete;
    SharedTexts &operator=(const SharedTexts &) = delete;
    /// Does not unmap what the host has mapped.
    ~SharedTexts() = default;

    /// Forgets all texts of this side, and releases those of the other side that were read: views
    /// of mapped memory become invalid. Both sides call this between two scripts.
    void startOver();

    /// Writes a text for the other side.
    /// \return its offset in bytes; nothing when it is too short or cannot be written.
    [[nodiscard]] std::optional<quint64> put(QStringView text);
    [[nodiscard]] std::optional<quint64> putSource(const ScriptSource &source);

    /// Returns a text that the other side wrote. The editor gets a copy. The host gets a view of
    /// mapped memory, which stays mapped until `startOver`.
    /// \param start in bytes.
    /// \param length in UTF-16 code units.
    /// \return nothing when there can be no text of the other side.
    [[nodiscard]] std::optional<QString> get(quint64 start, qsizetype length) const;

private:
    struct Mapping
    {
        void *memory;
        std::size_t size; // Bytes.
    };

    [[nodiscard]] bool hasRoomFor(qsizetype length) const;
    [[nodiscard]] std::optional<QString> mapped(qint64 start, qsizetype length) const;
    [[nodiscard]] std::optional<quint64> keep(qint64 end);
    [[nodiscard]] bool write(QStringView text, qint64 at) const;

    int m_descriptor;
    bool m_isHost;
    qint64 m_end; // Offset of the next text, in bytes.
    mutable std::vector<Mapping> m_mappings;
};

} // namespace penwick
