#include <Velor.Base/KelbIOSource.h>
#include <Velor.Base/VelorDebugTrace.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorZipStream.h>

#include <Poco/Zip/ZipArchive.h>
#include <Poco/Zip/ZipStream.h>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>
#include <iterator>
#include <sstream>

// Files for another system: `exchange write FOLDER` writes one of each kind, and `exchange read FOLDER`, run
// on the other system, reports what is not read as it was written.

namespace {

const QString Text = QString::fromUtf8("Gr\xC3\xBC\xC3\x9F"
                                       "e \xE4\xB8\xAD \xF0\x9F\x98\x80");
const TVec3d<float> Vector{1.5f, -2.25f, 3e-30f};
const quat Rotation{0.5f, -0.5f, 0.125f, 1.0f};
const QJsonDocument Json(QJsonArray{1, 2.5, Text});
const std::string Content = "walk\r\nrun\n\x1A end";

bool isGood = true;

void expect(bool isTrue, const char* what)
{
    if (!isTrue) {
        std::fprintf(stderr, "exchange: %s is not what was written\n", what);
        isGood = false;
    }
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeLog(const QString& path)
{
    VelorLog log(path.toStdString());
    log.setDebugOutputEnabled(false);
    log.setTimeStampEnabled(false);
    log.logMessage(Text.toStdString(), VelorLog::Warning);
    log.stream(VelorLog::Info) << "frames " << 24 << "\nand a second line";
}

void readLog(const QString& path)
{
    const QByteArray lines = bytesOf(path).replace("\r\n", "\n");
    expect(lines == "[WARNING] - " + Text.toUtf8() + "\nframes 24\nand a second line\n", "the log");
}

void writeTrace(const QDir& folder)
{
    const auto root = QSharedPointer<VelorDebugGenericNode<void>>::create(QStringLiteral("root"), Text);
    root->addGroup(QStringLiteral("b"), QString());
    root->addGroup(QStringLiteral("a"), QStringLiteral("<&\">"));
    expect(root->saveToFile(folder.path(), QStringLiteral("trace.xml")), "the trace");
    root->clear();
}

void readTrace(const QString& path)
{
    QDomDocument document;
    expect(document.setContent(bytesOf(path)), "the trace");
    const QDomElement root = document.documentElement();
    const QDomElement first = root.firstChildElement();
    expect(root.attribute(QStringLiteral("description")) == Text, "the root of the trace");
    expect(first.attribute(QStringLiteral("name")) == u'a', "the order of the trace");
    expect(first.attribute(QStringLiteral("description")) == QStringLiteral("<&\">"),
           "the markup in the trace");
    expect(first.nextSiblingElement().attribute(QStringLiteral("type")) == QStringLiteral("Group"),
           "the groups");
}

void writeTyped(const QString& path)
{
    KelbFile file(path.toUtf8(), KelbFile::ModeWrite);
    VelorIODevice device(&file);
    expect(device.write(Vector) && device.write(Rotation) && device.write(TMat4d<float>()) &&
               device.write(Text, true) && device.write(Json),
           "the typed file");
}

void readTyped(const QString& path)
{
    KelbFile file(path.toUtf8(), KelbFile::ModeRead);
    VelorIODevice device(&file);
    expect(device.readVector3() == Vector, "the vector");
    expect(device.readQuaternion() == Rotation, "the quaternion");
    expect(device.readMatrix4() == TMat4d<float>(), "the matrix");
    expect(device.readString() == Text, "the string");
    expect(device.readJsonDocument() == Json, "the document");
}

void writeArchive(const QString& path)
{
    VelorZipStream archive(path);
    expect(archive.addFile(QStringLiteral("Clips\\Deep\\") + Text, Content.data(), Content.size()),
           "the archive");
}

void readArchive(const QString& path)
{
    std::istringstream file(bytesOf(path).toStdString());
    const Poco::Zip::ZipArchive archive(file);
    const auto entry = archive.findHeader("clips/deep/" + Text.toStdString());
    if (entry == archive.headerEnd()) {
        expect(false, "the archive");
        return;
    }
    Poco::Zip::ZipInputStream content(file, entry->second);
    expect(std::string(std::istreambuf_iterator<char>(content), {}) == Content, "the archive's content");
}

} // namespace

int main(int argc, char** argv)
{
    const std::string task = argc == 3 ? argv[1] : "";
    const QDir folder(QString::fromLocal8Bit(argc == 3 ? argv[2] : ""));
    const auto path = [&](const char* name) { return folder.filePath(QString::fromUtf8(name)); };
    if (task == "write") {
        writeLog(path("log.txt"));
        writeTrace(folder);
        writeTyped(path("typed.bin"));
        writeArchive(path("archive.zip"));
    } else if (task == "read") {
        readLog(path("log.txt"));
        readTrace(path("trace.xml"));
        readTyped(path("typed.bin"));
        readArchive(path("archive.zip"));
    } else {
        std::fprintf(stderr, "usage: exchange write|read FOLDER\n");
        return 2;
    }
    return isGood ? 0 : 1;
}
