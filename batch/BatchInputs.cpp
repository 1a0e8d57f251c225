#include "batch/BatchInputs.h"

#include "platform/files/FileSystem.h"
#include "platform/files/FileVersion.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr auto kStandardInput = "-";

tl::expected<QByteArrayList, NameListError> namesOf(const NameList &list)
{
    const auto content = readAnyFile(list.path);
    if (!content)
        return tl::unexpected(NameListError{list.path, content.error()});
    QByteArrayList names = content->split(list.separator);
    names.removeAll(QByteArray());
    return names;
}

QList<BatchInput> withoutRepeatedFiles(const QList<BatchInput> &inputs)
{
    QSet<std::pair<quint64, quint64>> seen;
    QList<BatchInput> distinct;
    for (const BatchInput &input : inputs) {
        const auto version =
            input.isStandardInput ? std::nullopt : FileVersion::of(QFile::decodeName(input.name));
        const qsizetype before = seen.size();
        if (version)
            seen.insert({version->device, version->inode});
        if (!version || seen.size() > before)
            distinct.append(input);
    }
    return distinct;
}

std::optional<UsageFault> faultOf(const BatchOptions &options, const QList<BatchInput> &inputs)
{
    using Kind = UsageFault::Kind;
    const auto readers =
        std::count_if(inputs.begin(),
                      inputs.end(),
                      [](const BatchInput &input) { return input.isStandardInput; }) +
        std::count_if(options.lists.begin(), options.lists.end(), [](const NameList &list) {
            return list.path == kStandardInput;
        });
    if (readers > 1)
        return UsageFault{Kind::StandardInputTwice};
    const bool readsText = std::any_of(inputs.begin(), inputs.end(), [](const BatchInput &input) {
        return input.isStandardInput;
    });
    if (readsText && options.inPlace)
        return UsageFault{Kind::StandardInputInPlace};
    if (inputs.size() > 1 && options.writesText())
        return UsageFault{Kind::SeveralWithoutMode};
    if (inputs.size() > 1 && !options.outputFile.isEmpty())
        return UsageFault{Kind::SeveralForOneOutput};
    return std::nullopt;
}

} // namespace

tl::expected<QByteArray, FileError> readAnyFile(const QByteArray &path)
{
    if (path == kStandardInput) {
        QByteArray content;
        return readStandardInput([&content](QByteArrayView block) {
                   content += block;
                   return true;
               })
            .map([&content] { return content; });
    }
    QFile file(QFile::decodeName(path));
    if (QFileInfo(file).isDir())
        return tl::unexpected(FileError::fromErrno(EISDIR));
    errno = 0;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return systemError();
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return systemError();
    return content;
}

tl::expected<QList<BatchInput>, InputFault> collectInputs(const BatchOptions &options)
{
    QList<BatchInput> inputs;
    for (const QByteArray &name : options.files)
        inputs.append({name, name == kStandardInput});
    if (inputs.isEmpty() && options.lists.isEmpty())
        inputs.append({kStandardInput, true});
    // Before standard input is read for a list.
    if (const auto fault = faultOf(options, inputs); fault && !options.lists.isEmpty())
        return tl::unexpected(InputFault(*fault));
    for (const NameList &list : options.lists) {
        auto names = namesOf(list);
        if (!names)
            return tl::unexpected(InputFault(names.error()));
        for (const QByteArray &name : *names)
            inputs.append({name, false});
    }
    inputs = withoutRepeatedFiles(inputs);
    if (const auto fault = faultOf(options, inputs))
        return tl::unexpected(InputFault(*fault));
    return inputs;
}

} // namespace penwick
