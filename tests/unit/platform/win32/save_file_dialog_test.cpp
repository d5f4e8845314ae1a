#include <windows.h>

#include <commdlg.h>

#include <array>
#include <optional>

#include "fakes/temporary_folder.h"
#include "unit/platform/win32/window_fixture.h"

namespace {

using win32_test::DialogWatcher;

constexpr std::array<platform::FileFilter, 2> filters{{
    {"Log Files (*.log)", "*.log"},
    {"All Files (*.*)", "*.*"},
}};

/// The system makes no window for the next dialog, and the library of dialogs has an error to tell. Wine's
/// own has none for this case, so that of another call stands in for it.
class RefusedDialog {
  public:
    RefusedDialog() : hook_(SetWindowsHookExW(WH_CBT, &procedure, nullptr, GetCurrentThreadId())) {
        refused = false;
    }
    RefusedDialog(const RefusedDialog&) = delete;
    RefusedDialog& operator=(const RefusedDialog&) = delete;
    ~RefusedDialog() { UnhookWindowsHookEx(hook_); }

  private:
    static LRESULT CALLBACK procedure(int code, WPARAM first, LPARAM second) {
        constexpr ULONG_PTR dialogClass = 0x8002;
        if (code == HCBT_CREATEWND && !refused &&
            GetClassLongPtrW(reinterpret_cast<HWND>(first), GCW_ATOM) == dialogClass) {
            refused = true;
            PrintDlgA(nullptr);
            return 1;
        }
        return CallNextHookEx(nullptr, code, first, second);
    }

    static bool refused;
    HHOOK hook_;
};

bool RefusedDialog::refused = false;

class Win32SaveFileDialog : public Win32Window {
  protected:
    // The numbers that the dialog's own template gives its controls.
    static constexpr int kindList = 0x470;
    static constexpr int fileName = 0x47C;

    /// Opens the dialog from a button, as the window does, and lets `operate` work in it.
    std::optional<std::string> ask(const std::function<void(HWND dialog)>& operate) {
        win32_test::Errands errands;
        const DialogWatcher watcher(
            [&](HWND dialog) { errands.post([&operate, dialog] { operate(dialog); }); });
        std::optional<std::string> chosen;
        stop.onClick([&] { chosen = toolkit.saveFileDialog(filters, ".log"); });
        post("cmdStartStop", BM_CLICK);
        toolkit.processEvents();
        return chosen;
    }
    static void type(HWND dialog, const std::string& path) {
        SendDlgItemMessageA(dialog, fileName, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    }

    fakes::TemporaryFolder folder;
    std::string base = folder.path() + "\\";
};

TEST_F(Win32SaveFileDialog, GivesTheFullPathOfTheFile) {
    EXPECT_EQ(ask([this](HWND dialog) { type(dialog, base + "service.log"); }), base + "service.log");
}

TEST_F(Win32SaveFileDialog, AppendsTheDefaultExtension) {
    EXPECT_EQ(ask([this](HWND dialog) { type(dialog, base + "service"); }), base + "service.log");
}

TEST_F(Win32SaveFileDialog, GivesNothingWhenItIsCancelled) {
    EXPECT_EQ(ask([](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); }), std::nullopt);
}

TEST_F(Win32SaveFileDialog, AsksNothingBeforeAFileThatExists) {
    folder.write("service.log", "line");
    EXPECT_EQ(ask([this](HWND dialog) { type(dialog, base + "service.log"); }), base + "service.log");
}

TEST_F(Win32SaveFileDialog, OffersTheKindsOfFile) {
    std::vector<std::string> offered;
    ask([&](HWND dialog) {
        const LRESULT count = SendDlgItemMessageA(dialog, kindList, CB_GETCOUNT, 0, 0);
        for (WPARAM i = 0; i < static_cast<WPARAM>(count); ++i) {
            std::array<char, 64> kind{};
            SendDlgItemMessageA(dialog, kindList, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(kind.data()));
            offered.emplace_back(kind.data());
        }
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(offered, (std::vector<std::string>{"Log Files (*.log)", "All Files (*.*)"}));
}

TEST_F(Win32SaveFileDialog, ThatTheSystemDoesNotShowIsTold) {
    RefusedDialog refused;
    std::string told;
    const auto chosen = ask([&told](HWND box) {
        std::array<char, 256> shown{};
        constexpr int staticText = 0xFFFF;
        GetDlgItemTextA(box, staticText, shown.data(), static_cast<int>(shown.size()));
        told = shown.data();
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    });
    EXPECT_EQ(chosen, std::nullopt);
    EXPECT_EQ(told.substr(0, told.find(':')), "The file dialog could not be shown");
    EXPECT_FALSE(form.closing());
}

TEST_F(Win32SaveFileDialog, LeavesTheCurrentFolderAsItIs) {
    std::array<char, MAX_PATH> before{};
    std::array<char, MAX_PATH> after{};
    GetCurrentDirectoryA(MAX_PATH, before.data());
    ask([this](HWND dialog) { type(dialog, base + "service.log"); });
    GetCurrentDirectoryA(MAX_PATH, after.data());
    EXPECT_STREQ(after.data(), before.data());
}

}  // namespace
