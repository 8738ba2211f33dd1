#include "../tests/support/TestHelpers.h"

#include <Velor.Base/KelbDataStream.h>

#include <cstdlib>
#include <vector>

namespace {

constexpr std::uint16_t Access = KelbBase::IDataStream::AccessRead;

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

/// The delimited text and the position behind it, worked out without chunks.
void expectDelimited(const std::string& content, const std::string& delimiters, std::size_t maxCount)
{
    const std::string ends = delimiters.substr(0, delimiters.find('\0')) + '\0';
    const std::size_t end = std::min(content.find_first_of(ends), content.size());
    std::string text = content.substr(0, std::min(end, maxCount));
    const bool found = end < std::min(content.size(), maxCount);
    if (found && delimiters.find('\n') != std::string::npos && text.ends_with('\r')) {
        text.pop_back();
    }

    MemorySource source(content);
    KelbDataStream stream(&source, Access);
    std::vector<char> buffer(maxCount + 1);
    require(stream.readDelimited(buffer.data(), maxCount, delimiters) == text.size());
    require(text == buffer.data());
    require(stream.tell() == std::min(end, maxCount) + (found ? 1 : 0));
    stream.seek(0);
    require(stream.skipDelimited(delimiters) == std::min(end + 1, content.size()));
}

void expectLines(const std::string& content)
{
    MemorySource source(content);
    KelbDataStream stream(&source, Access);
    std::size_t at = 0;
    while (at < content.size()) {
        const std::size_t end = content.find('\n', at);
        std::string line = content.substr(at, end - at);
        if (end != std::string::npos && line.ends_with('\r')) {
            line.pop_back();
        }
        require(stream.readLine(false) == line);
        at = end == std::string::npos ? content.size() : end + 1;
        require(stream.tell() == at);
    }
    require(stream.readLine(true).empty() && stream.eof());
}

} // namespace

/// The first bytes are the most that is read, the number of delimiters and the delimiters; the rest is text,
/// which must come apart as a search of the whole text says, wherever the chunks end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const std::string bytes(data, data + size);
    const std::size_t maxCount = data[0] * std::size_t(2);
    const std::size_t delimiterCount = std::min<std::size_t>(data[1] % 4, size - 2);
    const std::string delimiters = bytes.substr(2, delimiterCount);
    const std::string content = bytes.substr(2 + delimiterCount);

    expectDelimited(content, delimiters, maxCount);
    if (content.find('\0') == std::string::npos) {
        expectLines(content);
    }
    MemorySource source(content);
    require(KelbDataStream(&source, Access).readAll() == content);
    return 0;
}
