#include <Velor.Base/KelbTags.h>

#include <cstdint>
#include <cstdlib>

namespace {

/// The tags of a text, added one by one.
KelbTags addedOneByOne(const QString& text)
{
    KelbTags tags;
    QString buffer;
    for (const QChar unit : text + u',') {
        if (unit != u',') {
            buffer += unit == u' ' && buffer.isEmpty() ? QString() : QString(unit);
        } else if (!buffer.isEmpty()) {
            tags.addTag(std::exchange(buffer, {}));
        }
    }
    if (tags.isEmpty()) {
        tags.addTag(KelbTags::DefaultTag);
    }
    return tags.toStringList();
}

} // namespace

/// Every text is a tag list: the fast reading must agree with adding tag by tag, and its text form must give
/// the same list. The input is taken for UTF-16, so that lone surrogates come up too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::u16string units(data, data + size);
    std::u16string wide(size / 2, u'\0');
    for (std::size_t i = 0; i < wide.size(); ++i) {
        wide[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
    }
    for (const QString& text : {QString::fromStdU16String(units), QString::fromStdU16String(wide)}) {
        const KelbTags tags(text);
        if (tags.getTags() != addedOneByOne(text).getTags() ||
            KelbTags(tags.toString()).getTags() != tags.getTags()) {
            std::abort();
        }
    }
    return 0;
}
