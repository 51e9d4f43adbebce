-- Creates the test session: one stereo track holding a silent stereo region of the given length
-- and Quorvex as its first plug-in. Ardour's Lua has no file import, so the region comes from a
-- bounce of the empty track; the driver then writes the click signal into the two mono files the
-- bounce made, whose paths this script reports along with the plug-in's parameter list.
--
-- Usage: ardour7-lua create_session.lua <daw_common.lua> <session dir> <name> <frames> <report>

local common, dir, name, frames, report = arg[1], arg[2], arg[3], tonumber(arg[4]), arg[5]
local D = dofile(common)

D.start_backend()
if create_session(dir, name, 48000) == nil then D.fail("cannot create the session in " .. dir) end

-- The bundle must have come through Ardour's VST 3 scan.
local info = nil
for p in ARDOUR.LuaAPI.list_plugins():iter() do
  if p.type == ARDOUR.PluginType.VST3 and p.name == D.plugin_name then info = p end
end
if info == nil then D.fail("Ardour's plug-in list has no VST 3 named " .. D.plugin_name) end

local tracks = Session:new_audio_track(2, 2, nil, 1, D.track_name, -1, ARDOUR.TrackMode.Normal, true)
if tracks:size() ~= 1 then D.fail("cannot add the track") end
local track = tracks:front()

local region = track:bounce_range(0, frames, ARDOUR.InterThreadInfo(), ARDOUR.LuaAPI.nil_proc(), false,
                                  "clicks", false)
if region:isnil() then D.fail("the bounce made no region") end
local audio = region:to_audioregion()
if audio:n_channels() ~= 2 or region:length():samples() ~= frames then D.fail("unexpected bounce") end
track:playlist():add_region(region, Temporal.timepos_t(0), 1, false)

local proc = ARDOUR.LuaAPI.new_plugin(Session, info.unique_id, ARDOUR.PluginType.VST3, "")
if proc:isnil() then D.fail("cannot instantiate " .. D.plugin_name) end
if track:add_processor_by_index(proc, 0, nil, true) ~= 0 then D.fail("cannot insert the plug-in") end

local lines = { "module\t" .. info.path }
for i = 0, audio:n_channels() - 1 do
  lines[#lines + 1] = "source\t" .. i .. "\t" .. audio:source(i):to_filesource():path()
end
local plug = proc:to_insert():plugin(0)
for j = 0, plug:parameter_count() - 1 do
  if plug:parameter_is_control(j) and plug:parameter_is_input(j) then
    lines[#lines + 1] = "param\t" .. j .. "\t" .. plug:parameter_label(j)
  end
end
D.write_file(report, table.concat(lines, "\n") .. "\n")

D.save()
close_session()
print("QUORVEX-DAW done")
