#include "editor/TextStorage.h"
#include "fuzz/Require.h"
#include "support/TextModel.h"
#include "text/WordBoundaries.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <optional>

using namespace penwick;

namespace {

// Checks against the model take time proportional to its length, so texts stay short. The build
// makes chunks small instead.
constexpr qint64 kMostUnits = 4000;

/// A storage, and a plain string that follows the storage's change signals.
class Session final
{
public:
    explicit Session(FuzzedDataProvider &provider)
        : m_provider(provider)
    {
        QObject::connect(&m_storage,
                         &TextStorage::changed,
                         &m_storage,
                         [this](qint64 offset, qint64 oldLength, qint64 newLength) {
                             REQUIRE(offset >= 0 && offset + oldLength <= m_model.size());
                             m_model.replace(
                                 offset, oldLength, m_storage.text().slice(offset, newLength));
                         });
        m_storage.setText(Text{QStringView(nextPiece())});
        m_model = m_storage.text().toString();
        m_saved = m_model;
    }

    void run()
    {
        while (m_provider.remaining_bytes() > 0) {
            step();
            check();
        }
        while (m_storage.isGrouping())
            m_storage.endUndoGrouping();
        checkHistory();
    }

private:
    /// Text with arbitrary code units, including surrogates in any order.
    QString nextPiece()
    {
        const std::string bytes = m_provider.ConsumeRandomLengthString(64);
        QString piece;
        if (m_provider.ConsumeBool()) {
            piece = QString::fromUtf8(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
        } else {
            for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
                const auto high = static_cast<unsigned char>(bytes[i]);
                const auto low = static_cast<unsigned char>(bytes[i + 1]);
                piece.append(QChar(static_cast<char16_t>(high << 8 | low)));
            }
        }
        return piece.repeated(m_provider.ConsumeIntegralInRange<int>(1, 8));
    }

    qint64 nextOffset()
    {
        return m_provider.ConsumeIntegralInRange<qint64>(-2, m_model.size() + 2);
    }

    void step()
    {
        switch (m_provider.ConsumeIntegralInRange<int>(0, 11)) {
        case 0:
        case 1:
        case 2:
            replace();
            break;
        case 3:
            m_storage.undo();
            break;
        case 4:
            m_storage.redo();
            break;
        case 5:
            m_storage.beginUndoGrouping();
            break;
        case 6:
            if (m_storage.isGrouping())
                m_storage.endUndoGrouping();
            break;
        case 7:
            m_storage.breakUndoCoalescing();
            m_storage.setSelectionForUndo({nextOffset(), 0});
            break;
        case 8:
            m_storage.setSavePoint();
            m_saved = m_model;
            m_saving.reset();
            break;
        case 9:
            m_storage.beginSaving();
            m_saving = m_model;
            break;
        case 10:
            endSaving();
            break;
        default:
            checkOffset(nextOffset());
            break;
        }
    }

    /// The saved text must be the text at the start of the save, whatever happened since.
    void endSaving()
    {
        const bool succeeded = m_provider.ConsumeBool();
        if (!m_saving)
            return;
        m_storage.endSaving(succeeded);
        if (succeeded)
            m_saved = *m_saving;
        m_saving.reset();
    }

    void replace()
    {
        using Kind = TextStorage::EditKind;
        const Text piece{QStringView(nextPiece())};
        const TextRange range{nextOffset(), m_provider.ConsumeIntegralInRange<qint64>(0, 300)};
        const auto kind = m_provider.PickValueInArray(
            {Kind::Typing, Kind::DeletingBackward, Kind::DeletingForward, Kind::Other});
        if (m_model.size() + piece.size() <= kMostUnits)
            m_storage.replaceCharacters(range, piece, kind);
    }

    void check() const
    {
        const Text &text = m_storage.text();
        REQUIRE(text.toString() == m_model);
        REQUIRE(text.metrics() == test::metricsOf(m_model));
        REQUIRE(m_storage.length() == m_model.size());
        REQUIRE(m_model.isValidUtf16());
        REQUIRE(m_storage.isModified() || m_model == m_saved);
    }

    /// Compares every query about one offset with the model.
    void checkOffset(qint64 asked) const
    {
        const Text &text = m_storage.text();
        qint64 offset = std::clamp<qint64>(asked, 0, m_model.size());
        if (offset < m_model.size() && m_model[offset].isLowSurrogate())
            --offset;
        REQUIRE(text.metricsBefore(asked) == test::metricsOf(m_model.first(offset)));
        REQUIRE(text.separatorLineAndColumn(asked) ==
                test::separatorLineAndColumn(m_model, offset));
        REQUIRE(text.slice(asked, 100) ==
                m_model.mid(std::clamp<qint64>(asked, 0, m_model.size()), 100));
        REQUIRE(text.mid(offset, text.size()).toString() == m_model.mid(offset));
        REQUIRE(text.previousClusterBoundary(offset) <= offset);
        REQUIRE(text.nextClusterBoundary(offset) >= offset);
        const qint64 boundary = text.clusterBoundaryAtOrBefore(offset);
        REQUIRE(boundary <= offset);
        REQUIRE(boundary == text.size() || text.nextClusterBoundary(boundary) > offset);
        const auto [start, end] = words::wordAround(text, offset);
        REQUIRE(start <= end && start >= 0 && end <= text.size());
        REQUIRE(words::nextWordStart(text, offset) >= offset);
        REQUIRE(words::previousWordStart(text, offset) <= offset);
    }

    /// Undoing all steps and redoing them must restore the text.
    void checkHistory()
    {
        const QString last = m_model;
        int steps = 0;
        for (; m_storage.canUndo(); ++steps) {
            m_storage.undo();
            check();
        }
        const QString first = m_model;
        for (; steps > 0; --steps) {
            REQUIRE(m_storage.canRedo());
            m_storage.redo();
            check();
        }
        REQUIRE(m_model == last);
        while (m_storage.canUndo())
            m_storage.undo();
        REQUIRE(m_model == first);
    }

    FuzzedDataProvider &m_provider;
    TextStorage m_storage;
    QString m_model;
    QString m_saved;
    std::optional<QString> m_saving;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    Session(provider).run();
    return 0;
}
