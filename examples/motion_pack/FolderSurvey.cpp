#include "FolderSurvey.h"

#include "Failure.h"

#include <Velor.Base/VelorWildcard.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;

namespace {

QString nameOf(const fs::path& path, const fs::path& root)
{
    const std::u8string relative = path.lexically_relative(root).generic_u8string();
    const QByteArray bytes(reinterpret_cast<const char*>(relative.data()), qsizetype(relative.size()));
    QString name = QString::fromUtf8(bytes);
    if (name.toUtf8() != bytes) {
        throw Failure{u"'%1' cannot be packed: its name is no valid UTF-8"_s.arg(name)};
    }
    return name;
}

/// Raises an error of the system, but not for dangling links and links to themselves.
fs::file_type typeOf(const fs::directory_entry& entry)
{
    std::error_code error;
    const fs::file_type type = entry.status(error).type();
    if (type == fs::file_type::none && error != std::errc::too_many_symbolic_link_levels) {
        throw fs::filesystem_error({}, error);
    }
    return type;
}

/// Whether this is a link to one of the folders that it lies in.
bool isCircle(const fs::recursive_directory_iterator& entry)
{
    fs::path above = entry->path();
    for (int depth = entry.depth(); depth >= 0 && entry->is_symlink(); --depth) {
        above = above.parent_path();
        if (fs::equivalent(above, entry->path())) {
            return true;
        }
    }
    return false;
}

} // namespace

FolderSurvey::FolderSurvey(const QString& folder, const QStringList& excludes,
                           const QList<QFileInfo>& ownFiles)
{
    QString name = folder; // The last one that was looked at.
    try {
        const fs::path root = QFileInfo(folder).filesystemAbsoluteFilePath();
        fs::recursive_directory_iterator entry(root, fs::directory_options::follow_directory_symlink);
        for (; entry != fs::end(entry); ++entry) {
            name = nameOf(entry->path(), root);
            const QFileInfo info(folder + u'/' + name);
            const fs::file_type type = typeOf(*entry);
            if (type == fs::file_type::directory && !isCircle(entry)) {
                folders.append(name);
            } else if (type != fs::file_type::regular) {
                leftOut.append(name);
                entry.disable_recursion_pending();
            } else if (VelorWildcard::check(name, excludes, Qt::CaseInsensitive)) {
                excluded.append(name);
            } else if (!ownFiles.contains(info)) {
                addFile(name, info);
            }
        }
    } catch (const fs::filesystem_error& error) {
        const QString reason = QString::fromStdString(error.code().message());
        throw Failure{u"'%1' cannot be read: %2"_s.arg(name, reason)};
    }
    folders.sort();
}

/// An archive keeps one of two files that have one name in it.
void FolderSurvey::addFile(const QString& name, const QFileInfo& info)
{
    const QString path = QString(name).replace(u'\\', u'/');
    const qsizetype folderSize = path.lastIndexOf(u'/') + 1;
    const QString entry = path.first(folderSize).toLower() + path.sliced(folderSize);
    if (files.contains(entry)) {
        throw Failure{u"'%1' and '%2' would have one name in the archive"_s.arg(files[entry].name, name)};
    }
    bytes += info.size();
    files.insert(entry, {name, info});
}
