// SPDX-License-Identifier: MIT
// slider_window: the volume leveler as a slider in a window, the pattern for every panel. Any
// call of the library may wait for other programs, so calls are made on a worker thread, of
// which the latest wish counts, and what comes of them is posted to the window: it never waits.
// What the window is told moves the slider and is never set again. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -mwindows -I../include slider_window.cpp -o slider_window.exe -lole32 -lcomctl32
#include <kora4.hpp>

#include <commctrl.h>

#include <condition_variable>
#include <cwchar>
#include <mutex>
#include <optional>
#include <thread>

namespace {

// Messages to the window: the value that is stored; a result that is not success.
constexpr UINT cStored = WM_APP;
constexpr UINT cRefused = WM_APP + 1;

struct Wish {
    std::optional<ULONG> value;  // to be set; then, and without one, show what is stored
    bool isEnd = false;
};

// What the worker is to do next. Every thread may ask, and nobody waits but the worker.
class Wishes {
  public:
    void Set(ULONG value) {
        Change([value](Wish& wish) { wish.value = value; });
    }
    void Read() {
        Change([](Wish&) {});
    }
    void End() {
        Change([](Wish& wish) { wish.isEnd = true; });
    }
    Wish Take() {
        std::unique_lock<std::mutex> hold(m_mutex);
        m_wake.wait(hold, [this] { return m_wish.has_value(); });
        const Wish wish = *m_wish;
        m_wish.reset();
        return wish;
    }

  private:
    template <typename How>
    void Change(How how) {
        {
            const std::lock_guard<std::mutex> hold(m_mutex);
            if (!m_wish)
                m_wish.emplace();
            how(*m_wish);
        }
        m_wake.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::optional<Wish> m_wish;
};

// Is called on threads of the library's, and only passes on.
class Listener final : public kora4::Callback {
  public:
    Listener(HWND window, Wishes& wishes) : m_window(window), m_wishes(wishes) {}

  private:
    void OnValue(const kora4::Value& value) override {
        if (value.Technology() == eVolumeLeveler)
            PostMessageW(m_window, cStored, static_cast<WPARAM>(value.Amount()), 0);
    }
    // Every value is another one.
    void OnProfile(LONG) override { m_wishes.Read(); }

    const HWND m_window;
    Wishes& m_wishes;
};

void Refuse(HWND window, const kora4::Status& status) {
    PostMessageW(window, cRefused, static_cast<WPARAM>(static_cast<ULONG>(status.Code())), 0);
}

// The worker: owns the object, in the multithreaded apartment.
void Work(HWND window, Wishes& wishes) {
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eMultithreaded);
    auto api = kora4::Api::Open();
    if (!api)
        return Refuse(window, api);
    const auto listener = kora4::MakeCallback<Listener>(window, wishes);
    if (const auto status = api->RegisterGuarded(listener.Get()); !status)
        return Refuse(window, status);
    for (Wish wish; !wish.isEnd; wish = wishes.Take()) {
        if (wish.value) {
            const auto status = api->SetVolumeLeveler(*wish.value);
            if (!status)
                Refuse(window, status);
        }
        // Also after a set: in a demo it answers S_OK and changes nothing.
        if (const auto stored = api->GetVolumeLeveler())
            PostMessageW(window, cStored, *stored, 0);
        else
            Refuse(window, stored);
    }
}

class Panel {
  public:
    explicit Panel(HWND window)
        : m_window(window),
          m_slider(CreateWindowExW(0, TRACKBAR_CLASSW, L"",
                                   WS_CHILD | WS_VISIBLE | TBS_AUTOTICKS, 10, 10, 260, 40,
                                   window, nullptr, nullptr, nullptr)),
          m_worker([this] { Work(m_window, m_wishes); }) {
        SendMessageW(m_slider, TBM_SETRANGE, TRUE,
                     MAKELPARAM(KORA4_VOLUME_LEVELER_MIN, KORA4_VOLUME_LEVELER_MAX));
    }
    ~Panel() {
        m_wishes.End();
        m_worker.join();
    }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    // The user moves the slider; nobody else makes it send this.
    void OnScroll(WORD what) {
        m_isHeld = what == TB_THUMBTRACK;
        m_wishes.Set(static_cast<ULONG>(SendMessageW(m_slider, TBM_GETPOS, 0, 0)));
    }
    // Moved so, the slider tells nobody. What is stored may lie outside its range: it then
    // stands at the end, and the title says the number.
    void OnStored(ULONG value) {
        if (!m_isHeld)
            SendMessageW(m_slider, TBM_SETPOS, TRUE, static_cast<LPARAM>(value));
        Say(L"Volume leveler: %lu", value);
    }
    void OnRefused(ULONG code) { Say(L"Volume leveler: 0x%08lX", code); }

  private:
    void Say(const wchar_t* format, ULONG number) {
        wchar_t text[64];
        std::swprintf(text, std::size(text), format, number);
        SetWindowTextW(m_window, text);
    }

    const HWND m_window;
    const HWND m_slider;
    bool m_isHeld = false;
    Wishes m_wishes;
    std::thread m_worker;
};

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* pPanel = reinterpret_cast<Panel*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (pPanel && message == WM_HSCROLL)
        pPanel->OnScroll(LOWORD(wParam));
    else if (pPanel && message == cStored)
        pPanel->OnStored(static_cast<ULONG>(wParam));
    else if (pPanel && message == cRefused)
        pPanel->OnRefused(static_cast<ULONG>(wParam));
    else
        return DefWindowProcW(window, message, wParam, lParam);
    return 0;
}

}  // namespace

int main() {
    InitCommonControls();
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = OnMessage;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursor(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = L"kora4_slider";
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, windowClass.lpszClassName, L"Volume leveler",
                        WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT, CW_USEDEFAULT, 300,
                        110, nullptr, nullptr, windowClass.hInstance, nullptr);
    if (!window)
        return 1;
    Panel panel(window);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&panel));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
