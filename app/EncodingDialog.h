#pragma once

#include "editor/BackgroundTask.h"
#include "encoding/FileConversion.h"

#include <QDialog>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QDialogButtonBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace penwick {

/// Lets the user choose the encoding that a file is converted from. First it finds the encodings
/// that decode the whole file, then it lists them with a preview, the most probable one first and
/// selected; Enter converts the file. Both run on another thread with a progress bar. What fails is
/// told in the dialog. Escape closes it at any time.
class EncodingDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param version the state of the file that was surveyed; another one is refused.
    EncodingDialog(QWidget *parent, const QString &path, const std::optional<FileVersion> &version);
    ~EncodingDialog() override;

    /// The converted text, once the dialog was accepted.
    [[nodiscard]] const Text &text() const { return m_text; }

private:
    void makeContent();
    void findCandidates();
    void showCandidates(const tl::expected<std::vector<Candidate>, FileError> &found);
    void convert();
    void showConverted(const Encoding &encoding,
                       const tl::expected<Text, ConversionError> &converted);
    void start(const QString &message, const BackgroundTask::Work &work);
    void showMessage(const QString &message);

    QString m_path;
    std::optional<FileVersion> m_version;
    QLabel *m_message;
    QListWidget *m_list;
    QProgressBar *m_bar;
    QPushButton *m_open;
    std::vector<Candidate> m_candidates; // In the order of the list.
    Text m_text;
    std::shared_ptr<TransferProgress> m_progress; // Of the current task.
    QTimer m_refresh;
    BackgroundTask m_task;
};

} // namespace penwick
