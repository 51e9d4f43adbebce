-- Shared by the DAW test's scripts: session, track and plug-in look-ups, waits and files.
-- Every failure raises a Lua error, which makes ardour7-lua exit non-zero.

local M = {}

M.track_name = "Clicks"
M.plugin_name = "Quorvex"

function M.fail(msg)
  error("QUORVEX-DAW: " .. msg, 2)
end

-- The Dummy backend never waits for hardware; only the session's rate matters here.
function M.start_backend()
  if AudioEngine:set_backend("None (Dummy)", "", "") == nil then
    M.fail("no Dummy backend")
  end
end

function M.track()
  local r = Session:route_by_name(M.track_name)
  if r:isnil() then M.fail("no track " .. M.track_name) end
  return r:to_track()
end

-- The track's only plug-in: Quorvex, first in the processor box.
function M.plugin_insert(track)
  local proc = track:nth_plugin(0)
  if proc:isnil() then M.fail("no plug-in on the track") end
  local pi = proc:to_insert()
  if pi:isnil() or pi:plugin(0):name() ~= M.plugin_name then M.fail("the track's plug-in is not Quorvex") end
  return proc, pi
end

-- Ardour's parameter index for each VST 3 parameter title.
function M.parameter_index(pi)
  local plug = pi:plugin(0)
  local index = {}
  for j = 0, plug:parameter_count() - 1 do
    if plug:parameter_is_control(j) and plug:parameter_is_input(j) then
      index[plug:parameter_label(j)] = j
    end
  end
  return index
end

function M.control(proc, j)
  local ac = proc:to_automatable():automation_control(
    Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, j), false)
  if ac:isnil() then M.fail("no automation control for parameter " .. j) end
  return ac
end

-- Waits for `cycles` process callbacks; the engine runs in its own thread, so a wait for its
-- callbacks is the way to know that the plug-in has been called since the last change.
function M.settle(cycles)
  if not ARDOUR.LuaAPI.wait_for_process_callback(cycles, 20000) then
    M.fail("the engine did not run " .. cycles .. " process callbacks within 20 s")
  end
end

-- Ardour takes a changed plug-in latency over in its own time: wait until the latency it uses
-- has stayed the same for a number of callbacks.
function M.settle_latency(proc)
  local last = proc:signal_latency()
  local same = 0
  for _ = 1, 400 do
    M.settle(1)
    local now = proc:signal_latency()
    if now == last then
      same = same + 1
      if same >= 8 then return now end
    else
      same = 0
      last = now
    end
  end
  M.fail("the plug-in latency did not settle")
end

function M.write_file(path, text)
  local f = io.open(path, "w")
  if f == nil then M.fail("cannot write " .. path) end
  f:write(text)
  f:close()
end

function M.save()
  if Session:save_state("", false, false, false, false, false) ~= 0 then M.fail("save_state failed") end
end

return M
