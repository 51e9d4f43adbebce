#pragma once
// What the VST 3 view needs of the editor beyond IEditorLink: its window and size. The editor's
// graphics class implements both; the binding finds this side with a dynamic_cast of GetGUI().
// UI thread only.

class IEditorWindow
{
  public:
    virtual ~IEditorWindow() = default;
    // The host's window type the back end can live in ("HWND" on Windows).
    virtual bool IsPlatformTypeSupported(const char* type) const = 0;
    // Creates the editor's window inside the host's parent window; hostContext is the view's
    // IPlugFrame (the back end takes the host's run loop from it). False when no window was made.
    virtual bool OpenWindow(void* parent, void* hostContext) = 0;
    virtual void CloseWindow() = 0;
    // Size at 100 %.
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    // Screen pixels per layout pixel; the window follows a change.
    virtual void SetScale(double scale) {}
    virtual double Scale() const { return 1.0; }
    // A key the host passes on (character, or the host's virtual key number when character is
    // 0); true when the editor used it.
    virtual bool OnHostKeyDown(char16_t character, int virtualKey) { return false; }
};
