#pragma once

#include "KelbIOSource.h"
#include "VelorBaseExport.h"
#include "VelorVectors.h"

#include <concepts>
#include <cstdint>

class QDomDocument;
class QJsonDocument;
class QString;

/// Stores and loads typed values through any source, at its position.
///
/// The forms have no type tags, no lengths, no version and no padding: a reader has to know what comes next.
/// Numbers are little-endian on every machine.
///
/// | Value               | Bytes                                                                  |
/// |---------------------|------------------------------------------------------------------------|
/// | float               | 4: IEEE 754 binary32                                                   |
/// | `TVec3d<float>`     | 12: x, y, z                                                            |
/// | `quat`              | 16: w, x, y, z, which is not the order of the fields                   |
/// | `TMat4d<float>`     | 64: the elements in storage order                                      |
/// | array of vectors    | 12 for each; the count is not stored                                   |
/// | `QString`           | UTF-8, and a byte 0 where it is terminated                             |
/// | `QDomDocument`      | XML text in UTF-8, indented by 4; up to the end of the source          |
/// | `QJsonDocument`     | indented JSON text in UTF-8; up to the end of the source               |
///
/// The device holds only a pointer to its source: see `KelbIODevice`. Every float is a call of four bytes and
/// a string is read byte by byte, so a source should buffer. A write returns whether all of it was written,
/// stops where the source falls short, and leaves what was written. A read reports no failure: what is
/// missing at the end of the data is 0, so that a quaternion or a matrix from there is all zeros.
class VELOR_BASE_EXPORT VelorIODevice : public KelbIODevice
{
public:
    /// `source` must not be null and outlives the device.
    explicit VelorIODevice(KelbIOSource* source);
    /// A copy shares the source and its position.
    /// @{
    VelorIODevice(const VelorIODevice&) = default;
    VelorIODevice& operator=(const VelorIODevice&) = default;
    /// @}
    ~VelorIODevice() override;

    using KelbIODevice::write;
    /// Writes the text in one call of the source. A U+0000 inside ends the string for `readString`, and a
    /// leading U+FEFF is not read back.
    bool write(const QString& text, bool terminate);
    /// A literal would be taken for raw bytes and `terminate` for their number.
    template <std::same_as<bool> Bool>
    bool write(const char* text, Bool terminate) = delete;
    /// Writes the components of one value, in the order that the table has.
    /// @{
    bool write(const TVec3d<float>& value);
    bool write(const quat& value);
    bool write(const TMat4d<float>& value);
    /// @}
    /// Writes the text in one call of the source; an empty document writes nothing and gives true. The bytes
    /// are UTF-8 whatever encoding the document declares, so it should declare none or UTF-8.
    bool write(const QDomDocument& document);
    /// Writes the text in one call of the source; an empty document writes nothing and gives false.
    bool write(const QJsonDocument& document);
    /// Writes `count` vectors, without their number.
    bool writeArray(const TVec3d<float>* values, std::uint64_t count);

    /// Reads `count` vectors into `values`, which has room for them.
    void readVector3Array(TVec3d<float>* values, std::uint64_t count);
    /// The next value, as `write` writes it.
    /// @{
    TVec3d<float> readVector3();
    quat readQuaternion();
    TMat4d<float> readMatrix4();
    /// @}
    /// Reads up to a byte 0, which is consumed, or the end of the data. Invalid UTF-8 becomes U+FFFD.
    QString readString();
    /// Reads everything up to the end of the source. The document is empty when nothing is left, when the
    /// source delivers less than its size told, when the text does not parse, and when it has 2 GiB or more.
    /// Qt frees a document by recursion, so that very deep nesting takes stack.
    QDomDocument readDomDocument();
    /// Like `readDomDocument`, for JSON.
    QJsonDocument readJsonDocument();

    /// A name for a new file in the directory of `path`: the base name of `path`, each UTF-16 unit that is no
    /// letter or number replaced by an underscore, then `extension`, which brings its own full stop. Where
    /// that exists, "_1" to "_9998" is put in front of `extension`, and the last of these is returned even
    /// though it exists. Nothing is created: two callers can be given one name.
    static QString safeFilename(QString path, QString extension);
    /// Reads a whole file into `data`, which the caller frees by `delete[]`; bytes that cannot be read are 0.
    /// A file that is missing or cannot be opened changes nothing and gives false; an empty one sets `size`
    /// to 0 and gives false. A file too large for memory throws `std::bad_alloc`.
    static bool loadBytesFrom(const QString& path, unsigned char*& data, std::uint64_t& size);
};
