#pragma once

#include "macro/script/ScriptSource.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace penwick {

/// Memory beside the connection of editor and host, for texts too long to be sent through it: each
/// copy of a large document is felt. It is a file without a name, in which either side has a part
/// of its own to write to; what holds there is sent through the connection. Neither side believes
/// what it finds.
///
/// The editor only reads from it and writes to it, so that nothing the host does to the file can
/// reach the editor as a signal.
class SharedTexts final
{
public:
    enum class Side { Editor, Host };

    /// Texts from this length on, in UTF-16 code units, are worth the calls that they take here.
    static constexpr qsizetype kLeastLength = 32768;
    /// How many bytes the host may write.
    static constexpr qint64 kHostRoom = qint64{1} << 30;

    /// \param descriptor of a file that both sides have open; not owned. -1 for none: then nothing
    ///        can be put here or found here.
    SharedTexts(int descriptor, Side side);
    SharedTexts(SharedTexts &&) = default;
    SharedTexts &operator=(SharedTexts &&) = default;
    SharedTexts(const SharedTexts &) = delete;
    SharedTexts &operator=(const SharedTexts &) = delete;
    ~SharedTexts() = default;

    /// Leaves a text for the other side.
    /// \return where it starts, in bytes; nothing where it is short, or cannot be left here.
    [[nodiscard]] std::optional<quint64> put(QStringView text);
    [[nodiscard]] std::optional<quint64> putSource(const ScriptSource &source);

    /// What the other side left. The editor gets a copy. The host gets the memory itself, which
    /// stays where it is for as long as the process lives.
    /// \param start in bytes. \param length in UTF-16 code units.
    /// \return nothing where the other side cannot have left a text.
    [[nodiscard]] std::optional<QString> get(quint64 start, qsizetype length) const;

private:
    [[nodiscard]] bool hasRoomFor(qsizetype length) const;
    [[nodiscard]] std::optional<quint64> keep(qint64 end);
    [[nodiscard]] bool write(QStringView text, qint64 at) const;

    int m_descriptor;
    Side m_side;
    qint64 m_end; // Where the next text goes.
};

} // namespace penwick
