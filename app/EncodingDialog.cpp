#include "app/EncodingDialog.h"

#include "app/DocumentDialogs.h"
#include "controls/VerbatimText.h"
#include "wording/FileReasons.h"
#include "wording/WordingLookup.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kWaitTime = 100; // Milliseconds; for small files the list is shown at once.
constexpr auto kRefreshInterval = 100ms;
constexpr QSize kListSize(520, 260);
constexpr int kRowSpacing = 3;

QLabel *makeLabel(const QString &text = {})
{
    auto *label = new QLabel;
    label->setWordWrap(true);
    setVerbatimText(label, text);
    return label;
}

/// The name of the encoding, and below it the preview.
QString labelOf(const Candidate &candidate)
{
    QString label = candidate.encoding->name;
    for (const QString &line : candidate.preview)
        label += u"\n\u3000"_s + visibleLine(line); // A blank in the font of the text.
    return label;
}

} // namespace

EncodingDialog::EncodingDialog(QWidget *parent,
                               const QString &path,
                               const std::optional<FileVersion> &version)
    : QDialog(parent)
    , m_path(path)
    , m_version(version)
    , m_message(makeLabel())
    , m_list(new QListWidget)
    , m_bar(new QProgressBar)
    , m_open(new QPushButton)
{
    makeContent();
    m_refresh.setInterval(kRefreshInterval);
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        const qint64 total = std::max(qint64(1), m_progress->total());
        m_bar->setValue(static_cast<int>(m_progress->done() * m_bar->maximum() / total));
    });
    connect(&m_task, &BackgroundTask::failed, this, [this] {
        showMessage(wording::reasonText(FileError::Kind::Other));
    });
    findCandidates();
}

EncodingDialog::~EncodingDialog()
{
    m_progress->cancel();
}

void EncodingDialog::makeContent()
{
    const QString title = wording::text(u"dialog.encodingTitle"_s);
    setWindowTitle(title);
    setWindowModality(Qt::ApplicationModal);
    m_list->setAccessibleName(title);
    m_list->setMinimumSize(kListSize);
    m_list->setWordWrap(false);
    m_list->setSpacing(kRowSpacing);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_bar->setTextVisible(false);
    QSizePolicy kept = m_bar->sizePolicy(); // The layout stays when the bar is hidden.
    kept.setRetainSizeWhenHidden(true);
    m_bar->setSizePolicy(kept);
    setVerbatimText(m_open, wording::text(u"dialog.open"_s));
    m_open->setDefault(true);
    auto *cancel = new QPushButton;
    setVerbatimText(cancel, wording::text(u"common.cancel"_s));
    cancel->setAutoDefault(false);
    connect(m_open, &QPushButton::clicked, this, &EncodingDialog::convert);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, m_open, &QPushButton::click);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_open);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeLabel(
        wording::text(u"dialog.encodingMessage"_s, {visibleLine(QFileInfo(m_path).fileName())})));
    layout->addWidget(m_list);
    layout->addWidget(m_message);
    layout->addWidget(m_bar);
    layout->addLayout(buttons);
}

void EncodingDialog::findCandidates()
{
    m_progress = std::make_shared<TransferProgress>();
    start(wording::text(u"dialog.encodingChecking"_s),
          [this, path = m_path, version = m_version, progress = m_progress](
              const BackgroundTask::IsCancelled & /*isCancelled*/) -> BackgroundTask::Completion {
              auto found = penwick::findCandidates(path, version, *progress);
              return [this, found = std::move(found)] { showCandidates(found); };
          });
}

void EncodingDialog::showCandidates(const tl::expected<std::vector<Candidate>, FileError> &found)
{
    if (!found || found->empty()) {
        showMessage(found ? wording::text(u"dialog.encodingNone"_s)
                          : wording::reasonText(found.error().kind));
        return;
    }
    m_candidates = *found;
    for (const Candidate &candidate : m_candidates)
        m_list->addItem(labelOf(candidate));
    m_list->setCurrentRow(0);
    showMessage({});
}

void EncodingDialog::convert()
{
    const int row = m_list->currentRow();
    if (m_task.isRunning() || row < 0)
        return;
    m_progress = std::make_shared<TransferProgress>();
    const Encoding &encoding = *m_candidates.at(static_cast<std::size_t>(row)).encoding;
    start(wording::text(u"dialog.encodingConverting"_s),
          [this, &encoding, path = m_path, version = m_version, progress = m_progress](
              const BackgroundTask::IsCancelled & /*isCancelled*/) -> BackgroundTask::Completion {
              auto converted = convertFile(path, encoding, version, *progress);
              return [this, &encoding, converted = std::move(converted)] {
                  showConverted(encoding, converted);
              };
          });
}

void EncodingDialog::showConverted(const Encoding &encoding,
                                   const tl::expected<Text, ConversionError> &converted)
{
    if (converted) {
        m_text = *converted;
        accept();
    } else if (const auto offset = converted.error().byteOffset) {
        showMessage(wording::text(u"error.encodingFailed"_s,
                                  {encoding.name, QString::number(*offset + 1)}));
    } else {
        showMessage(wording::reasonText(converted.error().fileError.kind));
    }
}

void EncodingDialog::start(const QString &message, const BackgroundTask::Work &work)
{
    setVerbatimText(m_message, message);
    m_list->setEnabled(false);
    m_open->setEnabled(false);
    m_bar->setValue(0);
    m_bar->setVisible(true);
    m_refresh.start();
    m_task.start(work, kWaitTime);
}

/// Ends a task in the dialog: shows its failure, or nothing.
void EncodingDialog::showMessage(const QString &message)
{
    m_refresh.stop();
    m_bar->setVisible(false);
    setVerbatimText(m_message, message);
    m_list->setEnabled(!m_candidates.empty());
    m_open->setEnabled(!m_candidates.empty());
    m_list->setFocus();
}

} // namespace penwick
