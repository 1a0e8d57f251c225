#include "app/ConversionOffer.h"

#include "app/DocumentDialogs.h"
#include "app/EncodingDialog.h"
#include "controls/MessageBox.h"
#include "controls/VerbatimText.h"
#include "editor/BackgroundTask.h"
#include "encoding/FileSurvey.h"
#include "wording/WordingLookup.h"

#include <QDir>
#include <QFileInfo>
#include <QPushButton>

#include <memory>

namespace penwick::dialogs {

using namespace Qt::StringLiterals;

namespace {

/// Positions are shown from 1.
QString ordinal(qint64 byteOffset)
{
    return QString::number(byteOffset + 1);
}

QString verdictOf(const FileSurvey &survey)
{
    if (survey.isBinary)
        return wording::text(u"error.notUtf8.binary"_s);
    if (survey.closest != nullptr) {
        return wording::text(u"error.notUtf8.closest"_s,
                             {survey.closest->name, ordinal(survey.closestEnd)});
    }
    if (survey.probable != nullptr)
        return wording::text(u"error.notUtf8.probable"_s, {survey.probable->name});
    return wording::text(u"error.notUtf8.unknown"_s);
}

/// The message, which says more as soon as the file is surveyed.
class Offer final
{
public:
    Offer(QWidget *parent, const QString &path)
        : m_path(path)
        , m_box(QMessageBox::Warning, wording::text(u"error.fileOpenFailed"_s), parent)
    {
        QPushButton *ok =
            m_box.addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
        m_box.setDefaultButton(ok);
        m_box.setEscapeButton(ok);
        showDetails(wording::text(u"error.notUtf8.examining"_s));
    }

    ~Offer() { m_progress->cancel(); }

    Q_DISABLE_COPY_MOVE(Offer)

    /// Shows the message. Returns the survey when the user wants a copy.
    [[nodiscard]] std::optional<FileSurvey> ask()
    {
        constexpr int kWaitTime = 100; // Milliseconds; the message is complete at once as a rule.
        m_task.start(
            [this, path = m_path, progress = m_progress](
                const BackgroundTask::IsCancelled & /*isCancelled*/) -> BackgroundTask::Completion {
                return [this, survey = surveyFile(path, *progress)] { show(survey); };
            },
            kWaitTime);
        m_box.exec();
        return m_box.clickedButton() != nullptr && m_box.clickedButton() == m_convert
                   ? std::optional(m_survey)
                   : std::nullopt;
    }

private:
    void show(const tl::expected<FileSurvey, FileError> &survey)
    {
        if (!survey) {
            showDetails(errorReasonText({DocumentError::Domain::NSPOSIXErrorDomain,
                                         survey.error().errnoValue,
                                         survey.error().kind}));
            return;
        }
        m_survey = *survey;
        showDetails(wording::text(u"error.notUtf8.place"_s, {ordinal(survey->invalidByte)}) +
                    u'\n' + verdictOf(*survey));
        if (survey->probable != nullptr) {
            m_convert = m_box.addTextButton(wording::text(u"dialog.convertCopy"_s),
                                            QMessageBox::AcceptRole);
        }
    }

    void showDetails(const QString &details)
    {
        m_box.setInformation(visibleLine(QDir::toNativeSeparators(m_path)) + u"\n"_s +
                             errorReasonText(kUnsupportedContent) + u"\n"_s + details);
    }

    QString m_path;
    MessageBox m_box;
    QPushButton *m_convert = nullptr; // Owned by the box.
    FileSurvey m_survey;
    std::shared_ptr<TransferProgress> m_progress = std::make_shared<TransferProgress>();
    BackgroundTask m_task;
};

} // namespace

std::optional<Text> offerConversion(QWidget *parent, const QString &path)
{
    const auto survey = Offer(parent, path).ask();
    if (!survey)
        return std::nullopt;
    EncodingDialog dialog(parent, path, survey->version);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.text();
}

QString pathForCopyOf(const QString &path)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix();
    const bool hasSuffix = !suffix.isEmpty() && !info.completeBaseName().isEmpty();
    const QString name =
        hasSuffix ? info.completeBaseName() + u".utf8."_s + suffix : info.fileName() + u".utf8"_s;
    return info.dir().filePath(name);
}

} // namespace penwick::dialogs
