#include "platform/win32/window.h"

#include <windows.h>

#include <array>
#include <bit>

#include "base/runtime_error.h"
#include "platform/win32/win32_toolkit.h"

namespace platform::win32 {

using base::RuntimeError;

namespace {

constexpr int twipsPerInch = 1440;
constexpr int pointsPerInch = 72;
// The controls' places were measured with this font; a larger one, such as that of newer message boxes, does
// not fit between them.
constexpr int fontPoints = 8;
constexpr const wchar_t* fontName = L"MS Shell Dlg";

std::wstring decode(UINT codePage, std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), needed);
    return wide;
}

std::string encode(UINT codePage, std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(codePage, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

struct Resolution {
    int across;
    int down;
};

Resolution screenResolution() {
    const HDC screen = GetDC(nullptr);
    const Resolution resolution{GetDeviceCaps(screen, LOGPIXELSX), GetDeviceCaps(screen, LOGPIXELSY)};
    ReleaseDC(nullptr, screen);
    return resolution;
}

/// The font of dialogs, its letters of that width on average; 0 leaves the width to the font.
HFONT makeDialogFont(int letterWidth) {
    return CreateFontW(-MulDiv(fontPoints, screenResolution().down, pointsPerInch), letterWidth, 0, 0,
                       FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                       DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, fontName);
}

/// The one that controls share. It lives as long as the program.
HFONT dialogFont() {
    static const HFONT font = makeDialogFont(0);
    return font;
}

void useFont(HWND window, HFONT font) {
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
}

struct Widths {
    int text;
    int letter;  // on average
};

Widths measure(HWND window, HFONT font, const std::wstring& text) {
    const HDC context = GetDC(window);
    const HGDIOBJ before = SelectObject(context, font);
    SIZE size{};
    GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, before);
    ReleaseDC(window, context);
    return {size.cx, metrics.tmAveCharWidth};
}

std::string systemText(DWORD error) {
    std::array<wchar_t, 512> text{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    const std::wstring_view all(text.data(), length);
    return toUtf8(all.substr(0, all.find_last_not_of(L"\r\n ") + 1));
}

/// The name goes with the window as an atom, because a property can hold no text.
void attachName(HWND window, const std::string& name) {
    const ATOM atom = GlobalAddAtomW(toWide(name).c_str());
    SetPropW(window, controlNameProperty, std::bit_cast<HANDLE>(static_cast<ULONG_PTR>(atom)));
}

void detachName(HWND window) {
    const HANDLE atom = RemovePropW(window, controlNameProperty);
    if (atom != nullptr) {
        GlobalDeleteAtom(static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(atom)));
    }
}

}  // namespace

std::wstring toWide(std::string_view text) {
    return decode(CP_UTF8, text);
}

std::string toUtf8(std::wstring_view text) {
    return encode(CP_UTF8, text);
}

std::string toAnsi(std::string_view text) {
    return encode(CP_ACP, toWide(text));
}

std::string ansiToUtf8(std::string_view text) {
    return toUtf8(decode(CP_ACP, text));
}

void raiseSystemError(std::string_view attempt) {
    const DWORD error = GetLastError();
    throw RuntimeError(static_cast<int>(error),
                       std::string(attempt) + ": " + systemText(error) + " (" + std::to_string(error) + ")");
}

Pixels toPixels(const Bounds& bounds) {
    static const Resolution resolution = screenResolution();
    const int left = MulDiv(bounds.left, resolution.across, twipsPerInch);
    const int top = MulDiv(bounds.top, resolution.down, twipsPerInch);
    return {left, top, MulDiv(bounds.left + bounds.width, resolution.across, twipsPerInch) - left,
            MulDiv(bounds.top + bounds.height, resolution.down, twipsPerInch) - top};
}

Window::Window(const WindowPlan& plan) : name_(plan.name) {
    const auto id = std::bit_cast<HMENU>(static_cast<LONG_PTR>(plan.id));
    handle_ = CreateWindowExW(plan.extendedStyle, plan.windowClass, toWide(plan.text).c_str(), plan.style,
                              plan.place.left, plan.place.top, plan.place.width, plan.place.height,
                              plan.parent, id, GetModuleHandleW(nullptr), nullptr);
    if (handle_ == nullptr) {
        raiseSystemError("The window system made no window for " + name_);
    }
    attachName(handle_, name_);
    useFont(handle_, dialogFont());
}

Window::~Window() {
    detachName(handle_);
    DestroyWindow(handle_);
}

std::string Window::text() const {
    std::wstring wide(static_cast<std::size_t>(GetWindowTextLengthW(handle_)) + 1, L'\0');
    const int length = GetWindowTextW(handle_, wide.data(), static_cast<int>(wide.size()));
    return toUtf8(std::wstring_view(wide).substr(0, static_cast<std::size_t>(length)));
}

void Window::setText(std::string_view text) {
    if (SetWindowTextW(handle_, toWide(text).c_str()) == 0) {
        raiseSystemError("The text of " + name_ + " could not be changed");
    }
}

SecondArgument Window::send(MessageCode message, FirstArgument first, SecondArgument second) const {
    return SendMessageW(handle_, message, first, second);
}

int Window::widthOf(const std::wstring& text) const {
    return measure(handle_, std::bit_cast<HFONT>(send(WM_GETFONT)), text).text;
}

/// The layout leaves no room for the letters of every system: those of the fonts that stand in for the real
/// ones can be wider.
void Window::fitText(int width) {
    const std::wstring shown = toWide(text());
    Widths widths = measure(handle_, dialogFont(), shown);
    for (int letter = widths.letter - 1; widths.text > width && letter > 0; --letter) {
        const HFONT narrower = makeDialogFont(letter);
        useFont(handle_, narrower);
        ownFont_.reset(narrower);
        widths = measure(handle_, narrower, shown);
    }
}

void Window::FontDeleter::operator()(HFONT__* font) const {
    DeleteObject(font);
}

}  // namespace platform::win32
