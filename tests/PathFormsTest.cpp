#include "support/TestHelpers.h"

#include <Velor.Base/PathForms.h>

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace std::string_literals;

WideString wide(const std::u16string& text) { return {text.begin(), text.end()}; }

struct FormRow
{
    const char* rule;
    std::u16string path;
    std::u16string form;
};

const FormRow FormRows[] = {
    {"nothing stays nothing", u"", u""},
    {"two units are no drive", u"C:", u"C:"},
    {"three are one", u"C:\\", u"\\\\?\\C:\\"},
    {"segments stay", u"z:/a/../b//c/", u"\\\\?\\z:\\a\\..\\b\\\\c\\"},
    {"a path may be relative to the drive", u"C:file", u"\\\\?\\C:file"},
    {"a share may begin with slashes", u"//server/share/file", u"\\\\?\\UNC\\server\\share\\file"},
    {"or with backslashes", u"\\\\server\\share/f", u"\\\\?\\UNC\\server\\share\\f"},
    {"but not with both", u"\\/server/share", u"\\/server/share"},
    {"a device is no share", u"//./pipe/x", u"//./pipe/x"},
    {"relative paths stay", u"dir/file", u"dir/file"},
    {"paths from the root stay", u"/dir/file", u"/dir/file"},
    {"an extended path counts as a share", u"\\\\?\\C:\\dir", u"\\\\?\\UNC\\?\\C:\\dir"},
    {"the sign behind Z is no drive", u"[:/a", u"[:/a"},
    {"nor is a unit with the low byte of A", u"\u0141:/a", u"\u0141:/a"},
};

TEST(PathForms, TextOfTheForms)
{
    for (const FormRow& row : FormRows) {
        EXPECT_EQ(toLongPath(wide(row.path)), wide(row.form)) << row.rule;
    }
    EXPECT_EQ(utf8ToWide("a\0\xC3\xA4\xF0\x9F\x98\x80"s), wide(u"a\0\u00E4\U0001F600"s));
    EXPECT_EQ(toWidePath("C:/\xC3\xA4"), wide(u"\\\\?\\C:\\\u00E4"));
}

TEST(PathForms, AFileOpensByEveryNameThatFopenOpens)
{
    const TestFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.narrowPath(""));
    std::filesystem::create_directories("c:/sub");
    std::string deep = folder.narrowPath("") + std::string(200, 'd');
    while (deep.size() < 3790) {
        deep += "/" + std::string(200, 'd');
    }
    std::filesystem::create_directories(deep);
    deep += "/" + std::string(3999 - deep.size(), 'f');

    for (const std::string& name :
         {"/" + folder.narrowPath("two"), "//" + folder.narrowPath("three"),
          "/./" + folder.narrowPath("point"), "a:b"s, "c:/x"s, "c:/sub/../y"s, "back\\slash"s, "\\x"s, "?"s,
          std::string(255, 'n'), deep, "\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80"s,
          "not UTF-8 \xFF\xC3 \xED\xA0\x80 \xC0\xAF"s, "C:\xFF"s,
          "\xDF\xBF \xE0\xA0\x80 \xEF\xBF\xBF \xF0\x90\x80\x80"s}) {
        SCOPED_TRACE(name);
        KelbFile written(name.c_str(), KelbFile::ModeWrite);
        written.write(name.data(), name.size());
        written.resize(name.size() - 1);
        written.close();
        std::FILE* file = std::fopen(name.c_str(), "rb");
        ASSERT_NE(file, nullptr);
        std::string content(name.size(), '\0');
        content.resize(std::fread(content.data(), 1, content.size(), file));
        std::fclose(file);
        EXPECT_EQ(content, name.substr(0, name.size() - 1));
    }
    EXPECT_FALSE(KelbFile("", KelbFile::ModeReadWrite).isOpen());
    EXPECT_FALSE(KelbFile(std::string(5000, 'x').c_str(), KelbFile::ModeReadWrite).isOpen());
    std::filesystem::current_path(before);
}

} // namespace
