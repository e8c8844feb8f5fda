#include "collectors/feature/profile.h"
#include "support/build.h"

#include <sys/stat.h>

struct ProfileTemplates : BUILDER_TEST {};

static const std::string line = "(ERROR) ProfileTemplateGet: ";

static std::string path(const std::string &name)
{
    return PathGet(PATH_TEMPLATE_DIR) + name;
}

static std::string document()
{
    logClear();
    BUILT_T built = buildBuffer(profileTemplateBuild, PROFILE_TEMPLATE_BUFFER_SIZE);
    EXPECT_EQ(built.result, 0);
    return built.text;
}

TEST_F(ProfileTemplates, OfferedOnesDependOnTheModel)
{
    for (const char *name : {"a", "Z", "Audio_Video_SMPTE", "Poly_StudioNet_Modular_Room_Switch"})
        fileWrite(path(name), "\"" + std::string(name).substr(0, 17) + "\"");
    vsState().units.emplace_back().management = true;
    for (const auto &[model, expected] : {std::pair("TK830-T16", R"(["Z","a"])"),
                                          {"TK830-T04", R"(["Audio_Video_SMPTE","Z","a"])"},
                                          {"TK620-R13-X", R"(["Poly_StudioNet_Mo","Z","a"])"}}) {
        vsState().units[0].model = model;
        EXPECT_EQ(document(), expected);
    }
    vsUnload(); // no model at all
    EXPECT_EQ(document(), R"(["Z","a"])");
    std::filesystem::remove_all(path(""));
    EXPECT_EQ(document(), "[]");
    EXPECT_EQ(logText(), line + "Open dir error...\n");
}

TEST_F(ProfileTemplates, ContentsAreCopiedAsTheyStand)
{
    const std::string nul(1, '\0');
    fileWrite(path("a"), "");
    EXPECT_EQ(document(), "[]");
    fileWrite(path("c"), "3");
    for (const auto &[content, copied] : {std::pair<std::string, std::string>("", ""),
                                          {nul + "2", ""},
                                          {" {\"x\": [2]} \n", " {\"x\": [2]} \n"},
                                          {"2" + nul + "rubbish", "2"},
                                          {"2],[2,", "2],[2,"},
                                          {"\xEF\xBB\xBF{}", "\xEF\xBB\xBF{}"}}) {
        fileWrite(path("b"), content);
        EXPECT_EQ(document(), "[," + copied + ",3]");
        EXPECT_EQ(logText(), "");
    }
    fileWrite(path("a"), "1");
    std::filesystem::remove(path("b"));
    std::filesystem::create_directory(path("b"));
    std::filesystem::create_symlink("/nowhere", path("b2"));
    ASSERT_EQ(mkfifo(path("b3").c_str(), 0600), 0);
    EXPECT_EQ(document(), "[1,3]");
    EXPECT_EQ(logText(), line + "ProfileTemplateGet: Failed to open file " + path("b2") + "\n");
}

// With the bracket before and three characters after an element, 30719 may be used.
TEST_F(ProfileTemplates, FullBufferEndsTheList)
{
    fileWrite(path("c"), "1");
    for (const auto &[a, b, kept] : {std::tuple(30716, 2, 0), {30715, 2, 1}, {20000, 10716, 1}, {20000, 10715, 2}}) {
        const std::string first = "\"" + std::string(a - 2, 'x') + "\"", second = "\"" + std::string(b - 2, 'x') + "\"";
        fileWrite(path("a"), first);
        fileWrite(path("b"), second);
        const std::string elements = kept == 0 ? "" : kept == 1 ? first : first + "," + second;
        EXPECT_TRUE(document() == "[" + elements + "]") << a << " " << b;
        EXPECT_EQ(logText(), line + "ProfileTemplateGet: Response buffer full, skipping remaining profiles\n");
    }
}
