#include "TestHelpers.h"

#include <Velor.Base/PathForms.h>

#include <QtCore/QDir>
#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace std::string_literals;

WideString wide(const std::u16string& text) { return {text.begin(), text.end()}; }

struct FormRow
{
    const char* fault;
    std::u16string path;
    std::u16string form;
};

const FormRow FormRows[] = {
    {"empty path", u"", u""},
    {"two units taken for a drive", u"C:", u"C:"},
    {"shortest drive missed", u"C:\\", u"\\\\?\\C:\\"},
    {"slashes of a drive kept", u"C:/dir/file", u"\\\\?\\C:\\dir\\file"},
    {"small letter is no drive", u"z:/a", u"\\\\?\\z:\\a"},
    {"drive-relative path missed", u"C:file", u"\\\\?\\C:file"},
    {"segments resolved", u"C:/a/../b//c/", u"\\\\?\\C:\\a\\..\\b\\\\c\\"},
    {"slashes of a share kept", u"//server/share/file", u"\\\\?\\UNC\\server\\share\\file"},
    {"backslashes of a share missed", u"\\\\server\\share\\file", u"\\\\?\\UNC\\server\\share\\file"},
    {"mixed separators taken for a share", u"\\/server/share", u"\\/server/share"},
    {"other mixed separators taken for a share", u"/\\server/share", u"/\\server/share"},
    {"device changed", u"//./pipe/x", u"//./pipe/x"},
    {"device with backslashes changed", u"\\\\.\\pipe\\x", u"\\\\.\\pipe\\x"},
    {"two full stops make a share", u"//../x", u"//../x"},
    {"relative path changed", u"dir/file", u"dir/file"},
    {"path from the root changed", u"/dir/file", u"/dir/file"},
    {"extended path taken for one", u"\\\\?\\C:\\dir", u"\\\\?\\UNC\\?\\C:\\dir"},
    {"digit taken for a drive", u"1:/a", u"1:/a"},
    {"sign behind the capitals taken for a drive", u"[:/a", u"[:/a"},
    {"unit above 255 cut to a drive", u"\u0141:/a", u"\u0141:/a"}, // its low byte is that of A
};

TEST(PathForms, LongPath)
{
    for (const FormRow& row : FormRows) {
        EXPECT_EQ(toLongPath(wide(row.path)), wide(row.form)) << row.fault;
    }
}

TEST(PathForms, Utf8BecomesUtf16WithoutATerminator)
{
    EXPECT_EQ(utf8ToWide(""), WideString());
    EXPECT_EQ(utf8ToWide("a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80"), wide(u"a\u00E4\u4E2D\U0001F600"));
    EXPECT_EQ(utf8ToWide("a\0b"s), wide(u"a\0b"s)) << "the length is explicit";
    EXPECT_EQ(toWidePath("C:/\xC3\xA4"), wide(u"\\\\?\\C:\\\u00E4"));
}

/// Where the system's own names are bytes, the forms stand between a name and its file.
TEST(PathForms, AFileOpensByEveryNameThatFopenOpens)
{
    const TestFolder folder;
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path({})));
    ASSERT_TRUE(QDir().mkpath(QStringLiteral("c:/sub")) && QDir().mkpath(QStringLiteral("./UNC")));
    std::string deep = folder.narrowPath("");
    while (deep.size() < 3800) {
        deep += "/" + std::string(200, 'd');
    }
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(deep)));
    deep += "/" + std::string(std::max<std::size_t>(4000 - deep.size() - 1, 1), 'f');
    ASSERT_EQ(deep.size(), 4000u);

    const std::string names[] = {
        "/" + folder.narrowPath("slashes"),
        "//" + folder.narrowPath("three"),
        "/./" + folder.narrowPath("point"),
        "a:b",
        "c:/x",
        "c:/sub/../y",
        "back\\slash",
        "\\x",
        "a",
        "UNC/x",
        "?",
        std::string(255, 'n'),
        deep,
        "\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80",
        "\xF4\x8F\xBF\xBF",
        "not UTF-8 \xFF\xC3 \xED\xA0\x80 \xC0\xAF",
        "C:\xFF",
    };
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        KelbFile written(name.c_str(), KelbFile::ModeWrite);
        EXPECT_EQ(written.write(name.data(), name.size()), name.size());
        written.close();
        std::FILE* file = std::fopen(name.c_str(), "rb");
        ASSERT_NE(file, nullptr);
        std::string content(name.size(), '\0');
        EXPECT_EQ(std::fread(content.data(), 1, content.size(), file), content.size());
        EXPECT_EQ(content, name);
        std::fclose(file);

        KelbFile changed(name.c_str(), KelbFile::ModeReadWrite);
        changed.resize(1);
        EXPECT_EQ(changed.size(), 1u);
    }
    QDir::setCurrent(before);
}

TEST(PathForms, ANameThatCannotBeOpensNothing)
{
    EXPECT_FALSE(KelbFile("", KelbFile::ModeReadWrite).isOpen());
    EXPECT_FALSE(KelbFile(std::string(5000, 'x').c_str(), KelbFile::ModeReadWrite).isOpen());
}

} // namespace
