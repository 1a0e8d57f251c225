#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <utility>
#include <vector>

namespace penwick::test {

/// A temporary home folder. While this lives, $HOME and the XDG base folders point into it, so that
/// no test touches the developer's files.
class TemporaryHome final
{
public:
    TemporaryHome()
    {
        set("HOME", path());
        set("XDG_DATA_HOME", dataFolder());
        set("XDG_CONFIG_HOME", configFolder());
        set("XDG_STATE_HOME", path() + QStringLiteral("/state"));
        set("XDG_CACHE_HOME", path() + QStringLiteral("/cache"));
    }

    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;

    ~TemporaryHome()
    {
        for (const auto &[name, value] : m_former)
            if (value.isNull())
                qunsetenv(name);
            else
                qputenv(name, value);
    }

    [[nodiscard]] QString path() const { return m_folder.path(); }

    /// $XDG_DATA_HOME. Not created yet.
    [[nodiscard]] QString dataFolder() const { return path() + QStringLiteral("/data"); }

    /// $XDG_CONFIG_HOME. Not created yet.
    [[nodiscard]] QString configFolder() const { return path() + QStringLiteral("/config"); }

    /// A path below the home folder.
    [[nodiscard]] QString file(const QString &relativePath) const
    {
        return path() + u'/' + relativePath;
    }

    /// Writes a file below the home folder and creates missing folders. Returns the file's path.
    QString write(const QString &relativePath, const QByteArray &content) const
    {
        const QString target = file(relativePath);
        QDir().mkpath(QFileInfo(target).path());
        QFile out(target);
        if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
            qFatal("A test file could not be written.");
        return target;
    }

    /// The content of a file below the home folder; null when it cannot be read.
    [[nodiscard]] QByteArray read(const QString &relativePath) const
    {
        QFile in(file(relativePath));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

private:
    void set(const char *name, const QString &value)
    {
        m_former.emplace_back(name, qgetenv(name));
        qputenv(name, QFile::encodeName(value));
    }

    QTemporaryDir m_folder;
    std::vector<std::pair<const char *, QByteArray>> m_former;
};

} // namespace penwick::test
