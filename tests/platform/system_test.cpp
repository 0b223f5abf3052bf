// Messages, cursors and the list of loaded modules.
#include "platform/module.h"
#include "platform/ui.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Ui, MessagesGoToStandardErrorWithoutAHandler)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(AfxMessageBox(CString("50% of %s"), 0, 0), IDOK);
    EXPECT_EQ(AfxMessageBox(nullptr), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "50% of %s\n\n");
}

TEST(Ui, MessagesGoToTheHandler)
{
    CString told;
    tympan::SetMessageHandler([&](const CString& text, UINT type) {
        told = text;
        return static_cast<int>(type) + 1;
    });
    EXPECT_EQ(AfxMessageBox("help", 5), 6);
    EXPECT_EQ(told, "help");
    tympan::SetMessageHandler([](const CString&, UINT) -> int { throw std::runtime_error("no"); });
    EXPECT_THROW(AfxMessageBox("help"), std::runtime_error);
    tympan::SetMessageHandler({});
}

TEST(Ui, TheCursorUntilNowComesBack)
{
    const HCURSOR wait = LoadCursor(nullptr, IDC_WAIT);
    const HCURSOR arrow = LoadCursor(nullptr, 32516);
    ASSERT_TRUE(wait && arrow && wait != arrow);
    EXPECT_EQ(LoadCursor(nullptr, 32514), wait);
    EXPECT_EQ(LoadCursor(nullptr, 1), nullptr);
    EXPECT_EQ(SetCursor(wait), nullptr);
    EXPECT_EQ(SetCursor(arrow), wait);
    EXPECT_EQ(SetCursor(nullptr), arrow);
}

HINSTANCE ModuleAt(int& place)
{
    return reinterpret_cast<HINSTANCE>(&place);
}

// The library's own entry, made when it was loaded, is the first and bears no handle.
std::vector<HINSTANCE> ModulesBesideTheLibrary()
{
    std::vector<HINSTANCE> modules = tympan::LoadedExtensionModules();
    EXPECT_FALSE(modules.empty());
    EXPECT_EQ(modules.front(), nullptr);
    modules.erase(modules.begin());
    return modules;
}

TEST(Module, EntriesComeAndGoWithTheirModule)
{
    int places[2] = {};
    const HINSTANCE first = ModuleAt(places[0]);
    const HINSTANCE second = ModuleAt(places[1]);
    AFX_EXTENSION_MODULE firstState;
    AFX_EXTENSION_MODULE secondState;
    ASSERT_TRUE(AfxInitExtensionModule(firstState, first));
    ASSERT_TRUE(AfxInitExtensionModule(secondState, second));
    new CDynLinkLibrary(firstState);
    new CDynLinkLibrary(secondState);
    new CDynLinkLibrary(firstState);
    EXPECT_THAT(ModulesBesideTheLibrary(), ElementsAre(first, second, first));
    AfxTermExtensionModule(firstState);
    EXPECT_THAT(ModulesBesideTheLibrary(), ElementsAre(second));
    EXPECT_FALSE(firstState.bInitialized);
    AfxTermExtensionModule(firstState); // again: nothing left to do
    AfxTermExtensionModule(secondState);
    EXPECT_THAT(ModulesBesideTheLibrary(), IsEmpty());
}

TEST(Module, ASecondStartChangesNothing)
{
    int places[2] = {};
    AFX_EXTENSION_MODULE state;
    AfxInitExtensionModule(state, ModuleAt(places[0]));
    EXPECT_TRUE(AfxInitExtensionModule(state, ModuleAt(places[1])));
    EXPECT_EQ(state.hModule, ModuleAt(places[0]));
    AfxTermExtensionModule(state);
    EXPECT_TRUE(AfxInitExtensionModule(state, ModuleAt(places[1])));
    EXPECT_EQ(state.hModule, ModuleAt(places[1]));
    AfxTermExtensionModule(state);
}

} // namespace
