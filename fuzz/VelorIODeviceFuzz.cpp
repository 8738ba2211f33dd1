#include "../tests/support/TestHelpers.h"

#include <Velor.Base/VelorIODevice.h>

#include <QtCore/QJsonDocument>
#include <QtXml/QDomDocument>

#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

/// What is read and written again is the bytes that were there, zeros behind their end.
void expectSameNumbers(const std::string& bytes)
{
    MemorySource source(bytes);
    VelorIODevice reader(&source);
    MemorySource copy;
    VelorIODevice writer(&copy);
    while (!source.eof()) {
        writer.write(reader.readVector3());
        writer.write(reader.readQuaternion());
        writer.write(reader.readMatrix4());
    }
    require(copy.bytes.substr(0, bytes.size()) == bytes);
    require(copy.bytes.find_first_not_of('\0', bytes.size()) == std::string::npos);
}

void readStrings(const std::string& bytes)
{
    MemorySource source(bytes);
    VelorIODevice device(&source);
    while (!source.eof()) {
        const QString text = device.readString();
        MemorySource copy;
        VelorIODevice again(&copy);
        require(again.write(text, true));
        again.rewind();
        require(text.startsWith(QChar(QChar::ByteOrderMark)) || again.readString() == text);
    }
}

void readDocuments(const std::string& bytes)
{
    MemorySource source(bytes);
    VelorIODevice device(&source);
    const QDomDocument dom = device.readDomDocument();
    device.rewind();
    const QJsonDocument json = device.readJsonDocument();
    MemorySource copy;
    VelorIODevice writer(&copy);
    require(writer.write(dom));
    copy = MemorySource();
    if (writer.write(json)) {
        writer.rewind();
        require(writer.readJsonDocument() == json);
    }
}

} // namespace

/// Stored values come from files that anybody may have made: whatever the bytes, reading ends, and what was
/// read can be stored again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    expectSameNumbers(bytes);
    readStrings(bytes);
    readDocuments(bytes);
    return 0;
}
