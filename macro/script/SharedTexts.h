#pragma once

#include "macro/script/ScriptSource.h"
#include "text/Text.h"

#include <QString>
#include <QStringView>

#include <cstddef>
#include <functional>
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

    /// How the units of a text are stored.
    enum class Form {
        Utf16,
        Ascii, ///< One byte each. Only the host writes this: half the memory, but not mappable.
    };

    /// Where a text is.
    struct Place
    {
        quint64 start = 0; ///< Bytes.
        Form form = Form::Utf16;
    };

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
    /// \return nothing when it is too short or cannot be written.
    [[nodiscard]] std::optional<Place> put(QStringView text);
    [[nodiscard]] std::optional<Place> putSource(const ScriptSource &source);

    /// Writes the next piece of a text whose end is not known yet. The form of the first piece is
    /// that of the text.
    /// \return false when it cannot be written, when the first piece is shorter than
    /// `kLeastLength`, or when a later one does not fit the form. The text is then as before.
    [[nodiscard]] bool append(QStringView piece);
    /// Ends the text of the pieces; there must be one. Writing another text discards pieces that
    /// were not ended.
    [[nodiscard]] Place finish();

    /// Returns a text that the other side wrote. The editor gets a copy. The host gets a view of
    /// mapped memory, which stays mapped until `startOver`, of a text in the form `Utf16`.
    /// \param length in UTF-16 code units.
    /// \return nothing when there can be no text of the other side.
    [[nodiscard]] std::optional<QString> get(Place place, qsizetype length) const;

    /// Returns such a text, which is decoded on several threads if it is long.
    /// \return nothing when there is none, or when it is malformed: a lone surrogate, or a byte
    /// that is no ASCII in the form `Ascii`.
    [[nodiscard]] std::optional<Text> text(Place place, qsizetype length) const;

    /// True when the file is long enough for such a text of the other side.
    [[nodiscard]] bool hasText(Place place, qsizetype length) const;

private:
    struct Mapping
    {
        void *memory;
        std::size_t size; // Bytes.
    };

    struct OpenText
    {
        qint64 end; // Offset of the next piece, in bytes.
        Form form;
    };

    [[nodiscard]] bool hasRoomFor(qsizetype length) const;
    [[nodiscard]] std::optional<QString> mapped(qint64 start, qsizetype length) const;
    /// Completes the text that was written up to `end` and returns its place.
    [[nodiscard]] Place keep(qint64 end, Form form);
    [[nodiscard]] Form formOf(QStringView text) const;
    [[nodiscard]] bool write(QStringView text, Form form, qint64 at) const;
    [[nodiscard]] bool writeAscii(QStringView text, qint64 at) const;
    /// Passes on the units from `start` to `end` of a text in pieces that fit the processor's
    /// cache. Bytes come as they are. No piece but the last ends with the first half of a surrogate
    /// pair. \return false when the file is shorter, or a sink returned false.
    [[nodiscard]] bool readPart(Place place,
                                qsizetype start,
                                qsizetype end,
                                const std::function<bool(QByteArrayView)> &takeAscii,
                                const std::function<bool(QStringView)> &takeUtf16) const;
    [[nodiscard]] std::optional<Text> part(Place place, qsizetype start, qsizetype end) const;
    [[nodiscard]] qsizetype cutNear(Place place, qsizetype offset) const;

    int m_descriptor;
    bool m_isHost;
    qint64 m_end;                   // Offset of the next text, in bytes.
    std::optional<OpenText> m_open; // The text that is written in pieces, from `m_end` on.
    mutable std::vector<Mapping> m_mappings;
};

} // namespace penwick
