// Win32Toolkit draws the window with the system's own controls on Windows. The composition root owns it; it
// lives on the thread that runs it.
//
// Other programs, such as readers for the blind and test tools, find a control by its number, which is
// firstControlId plus its place in the tab order, or by its name: the window property controlNameProperty
// holds a global atom of it.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/ui.h"
#include "platform/win32/events.h"

struct tagMSG;

namespace platform::win32 {

inline constexpr const wchar_t* controlNameProperty = L"tyIndexer.ControlName";
/// Numbers 1 and 2 mean the keys Enter and Escape to the system, so that no control has them.
inline constexpr int firstControlId = 100;
/// The number of the program's icon among its resources.
inline constexpr int iconResource = 1;

class Win32Form;

class Win32Toolkit final : public Toolkit {
  public:
    Win32Toolkit();
    ~Win32Toolkit() override;

    Form& createForm(std::string_view name, std::string_view caption, int width, int height) override;
    void processEvents() override;
    void run() override;
    void messageBox(std::string_view text) override;
    std::optional<std::string> saveFileDialog(std::span<const FileFilter> filters,
                                              std::string_view defaultExtension) override;

  private:
    [[nodiscard]] Win32Form& form() const;
    void handleDeferred();
    void dispatch(tagMSG& message);
    template <class Dialog>
    auto showDialog(const Dialog& dialog);
    void endDialogs() const;

    Events events_;
    std::unique_ptr<Win32Form> form_;
    int openDialogs_ = 0;
};

}  // namespace platform::win32
