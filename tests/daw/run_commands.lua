-- Opens the test session and runs a command file, one command a line, fields split by tabs:
--   set <title> <value>            sets a parameter through Ardour's control, by its VST 3 title
--   settle                         waits until the plug-in has run and its latency is settled
--   automate <title> <s> <v> ...   replaces the parameter's automation by points (sample, value)
--                                  and puts it in Play mode
--   export <file> <frames>         exports the master bus, samples 0 to <frames>, as float WAV
--   values <file>                  writes every parameter as Ardour holds it (control value,
--                                  and what the plug-in object reports) plus the latency
--   save                           saves the session
-- Usage: ardour7-lua run_commands.lua <daw_common.lua> <session dir> <name> <commands> <preset id>

local common, dir, name, commands, preset = arg[1], arg[2], arg[3], arg[4], arg[5]
local D = dofile(common)

D.start_backend()
if load_session(dir, name) == nil then D.fail("cannot load the session in " .. dir) end

local track = D.track()
local proc, pi = D.plugin_insert(track)
local index = D.parameter_index(pi)

local function param(title)
  local j = index[title]
  if j == nil then D.fail("no parameter titled '" .. title .. "'") end
  return j
end

local function split(line)
  local fields = {}
  for f in (line .. "\t"):gmatch("([^\t]*)\t") do fields[#fields + 1] = f end
  return fields
end

local function export(file, frames)
  local folder = file:match("^(.*)/[^/]*$")
  local e = Session:simple_export()
  e:set_folder(folder)
  e:set_name("quorvex-take")
  if not e:set_preset(preset) then D.fail("no export preset " .. preset) end
  e:set_range(0, frames)
  if not e:run_export() then D.fail("the export failed") end
  local made = folder .. "/quorvex-take.wav"
  if not os.rename(made, file) then D.fail("the export wrote no " .. made) end
end

local function values(file)
  local lines = { "latency\t" .. proc:signal_latency() }
  local ok = false
  for title, j in pairs(index) do
    local v_control = D.control(proc, j):get_value()
    local v_plugin = ARDOUR.LuaAPI.get_plugin_insert_param(pi, j, ok)
    lines[#lines + 1] = string.format("value\t%s\t%.17g\t%.17g", title, v_control, v_plugin)
  end
  table.sort(lines)
  D.write_file(file, table.concat(lines, "\n") .. "\n")
end

local function automate(f)
  local ac = D.control(proc, param(f[2]))
  local list = ac:alist()
  list:clear_list()
  for i = 3, #f - 1, 2 do
    list:add(Temporal.timepos_t(tonumber(f[i])), tonumber(f[i + 1]), false, false)
  end
  ac:set_automation_state(ARDOUR.AutoState.Play)
end

for line in io.lines(commands) do
  local f = split(line)
  local cmd = f[1]
  -- In the log, so that Ardour's own messages can be placed.
  print("QUORVEX-DAW command: " .. line)
  if cmd == "set" then
    D.control(proc, param(f[2])):set_value(tonumber(f[3]), PBD.GroupControlDisposition.NoGroup)
  elseif cmd == "settle" then
    D.settle(16)
    D.settle_latency(proc)
  elseif cmd == "automate" then
    automate(f)
  elseif cmd == "export" then
    export(f[2], tonumber(f[3]))
  elseif cmd == "values" then
    values(f[2])
  elseif cmd == "save" then
    D.save()
  elseif cmd ~= "" then
    D.fail("unknown command '" .. cmd .. "'")
  end
end

close_session()
print("QUORVEX-DAW done")
