#include <Velor.Base/KelbSynonyms.h>

#include <QtCore/QTemporaryFile>

#include <cstdint>
#include <cstdlib>

namespace {

QString writtenFile(const std::uint8_t* data, std::size_t size)
{
    static QTemporaryFile file;
    if (!file.open() || !file.resize(0) ||
        file.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size)) {
        std::abort();
    }
    file.close();
    return file.fileName();
}

} // namespace

/// A synonyms file comes from wherever the user keeps it. A file that fails to load must leave the set as it
/// was, and one that loads must add the same groups each time.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString path = writtenFile(data, size);
    KelbSynonyms once;
    const bool loads = once.load(path);
    KelbSynonyms twice = once;
    if (twice.load(path) != loads || (!loads && !(twice == KelbSynonyms())) ||
        (twice == once) != (once == KelbSynonyms())) {
        std::abort();
    }
    return 0;
}
