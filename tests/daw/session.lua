-- The DAW test's Ardour side; DawTests.cpp describes its two modes and the command file.
local mode, dir, name = arg[1], arg[2], arg[3]
local function fail(msg) error("QUORVEX-DAW: " .. msg, 2) end
local function write(path, lines)
  local f = io.open(path, "w") or fail("cannot write " .. path)
  f:write(table.concat(lines, "\n") .. "\n")
  f:close()
end
local function save()
  if Session:save_state("", false, false, false, false, false) ~= 0 then fail("save_state failed") end
end
local function titles(plug, each)
  for j = 0, plug:parameter_count() - 1 do
    if plug:parameter_is_control(j) and plug:parameter_is_input(j) then each(j, plug:parameter_label(j)) end
  end
end
if AudioEngine:set_backend("None (Dummy)", "", "") == nil then fail("no Dummy backend") end

if mode == "create" then
  local frames, report = tonumber(arg[4]), arg[5]
  if create_session(dir, name, 48000) == nil then fail("cannot create the session in " .. dir) end
  local info = nil
  for p in ARDOUR.LuaAPI.list_plugins():iter() do
    if p.type == ARDOUR.PluginType.VST3 and p.name == "Quorvex" then info = p end
  end
  if info == nil then fail("Ardour's plug-in list has no VST 3 named Quorvex") end
  local tracks = Session:new_audio_track(2, 2, nil, 1, "Clicks", -1, ARDOUR.TrackMode.Normal, true)
  if tracks:size() ~= 1 then fail("cannot add the track") end
  local track = tracks:front()
  local region = track:bounce_range(0, frames, ARDOUR.InterThreadInfo(), ARDOUR.LuaAPI.nil_proc(), false,
                                    "clicks", false)
  if region:isnil() then fail("the bounce made no region") end
  local audio = region:to_audioregion()
  if audio:n_channels() ~= 2 or region:length():samples() ~= frames then fail("unexpected bounce") end
  track:playlist():add_region(region, Temporal.timepos_t(0), 1, false)
  local proc = ARDOUR.LuaAPI.new_plugin(Session, info.unique_id, ARDOUR.PluginType.VST3, "")
  if proc:isnil() then fail("cannot instantiate Quorvex") end
  if track:add_processor_by_index(proc, 0, nil, true) ~= 0 then fail("cannot insert the plug-in") end
  local lines = { "module\t" .. info.path }
  for i = 0, 1 do lines[#lines + 1] = "source\t" .. i .. "\t" .. audio:source(i):to_filesource():path() end
  titles(proc:to_insert():plugin(0), function(j, title) lines[#lines + 1] = "param\t" .. j .. "\t" .. title end)
  write(report, lines)
  save()
  close_session()
  print("QUORVEX-DAW done")
  return
end

local commands, preset = arg[4], arg[5]
if load_session(dir, name) == nil then fail("cannot load the session in " .. dir) end
local route = Session:route_by_name("Clicks")
if route:isnil() then fail("no track Clicks") end
local proc = route:to_track():nth_plugin(0)
if proc:isnil() then fail("no plug-in on the track") end
local pi = proc:to_insert()
if pi:isnil() or pi:plugin(0):name() ~= "Quorvex" then fail("the track's plug-in is not Quorvex") end
local index = {}
titles(pi:plugin(0), function(j, title) index[title] = j end)
local function control(title)
  local j = index[title] or fail("no parameter titled '" .. title .. "'")
  local ac = proc:to_automatable():automation_control(
    Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, j), false)
  if ac:isnil() then fail("no automation control for " .. title) end
  return ac
end
local function settle(cycles)
  if not ARDOUR.LuaAPI.wait_for_process_callback(cycles, 20000) then fail("the engine stopped") end
end
local function settle_latency()
  local last, same = proc:signal_latency(), 0
  for _ = 1, 400 do
    settle(1)
    local now = proc:signal_latency()
    same = now == last and same + 1 or 0
    last = now
    if same >= 8 then return end
  end
  fail("the plug-in latency did not settle")
end

for line in io.lines(commands) do
  local f = {}
  for field in (line .. "\t"):gmatch("([^\t]*)\t") do f[#f + 1] = field end
  print("QUORVEX-DAW command: " .. line)
  if f[1] == "set" then
    control(f[2]):set_value(tonumber(f[3]), PBD.GroupControlDisposition.NoGroup)
  elseif f[1] == "settle" then
    settle(16)
    settle_latency()
  elseif f[1] == "automate" then
    local ac = control(f[2])
    local list = ac:alist()
    list:clear_list()
    for i = 3, #f - 1, 2 do list:add(Temporal.timepos_t(tonumber(f[i])), tonumber(f[i + 1]), false, false) end
    ac:set_automation_state(ARDOUR.AutoState.Play)
  elseif f[1] == "export" then
    local folder = f[2]:match("^(.*)/[^/]*$")
    local e = Session:simple_export()
    e:set_folder(folder)
    e:set_name("quorvex-take")
    if not e:set_preset(preset) then fail("no export preset " .. preset) end
    e:set_range(0, tonumber(f[3]))
    if not e:run_export() then fail("the export failed") end
    if not os.rename(folder .. "/quorvex-take.wav", f[2]) then fail("the export wrote no file") end
  elseif f[1] == "values" then
    local lines = { "latency\t" .. proc:signal_latency() }
    for title, j in pairs(index) do
      lines[#lines + 1] = string.format("value\t%s\t%.17g\t%.17g", title, control(title):get_value(),
                                        ARDOUR.LuaAPI.get_plugin_insert_param(pi, j, false))
    end
    write(f[2], lines)
  elseif f[1] == "save" then
    save()
  elseif f[1] ~= "" then
    fail("unknown command '" .. f[1] .. "'")
  end
end
close_session()
print("QUORVEX-DAW done")
