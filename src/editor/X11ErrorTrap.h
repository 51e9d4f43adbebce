#pragma once
// Xlib reports protocol errors through one handler per process, and its default handler ends the
// process. The editor's own connections must never end the host: an error on one of them (the
// host destroyed its parent window before removing our view, or handed us a window that does not
// exist) is counted and dropped. Errors on every other connection go on to the handler that was
// there before, so the host keeps its own error handling. UI thread.

struct _XDisplay;

namespace x11trap
{
// Starts trapping errors on the connection (the process handler is installed with the first).
void Watch(_XDisplay* display);
// Stops trapping; with the last connection the previous handler is put back, unless the host has
// installed another since.
void Unwatch(_XDisplay* display);
// Errors seen on a watched connection so far.
int ErrorCount(_XDisplay* display);
} // namespace x11trap
