-- Run twice by ArdourKeepsTheState: the first run makes a session with the effect in it, sets a parameter, plays and
-- saves; the second opens the session again. Prints what the test looks for.
local folder = os.getenv("DRUMFELL_SESSION")
local session = load_session(folder, "take")
local isNew = not session
if isNew then
    session = create_session(folder, "take", 48000)
    session:new_audio_track(2, 2, nil, 1, "Drums", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
end
local track = session:route_by_name("Drums")
local effect
if isNew then
    effect = ARDOUR.LuaAPI.new_plugin(session, "Drumfell", ARDOUR.PluginType.LXVST, "")
    print("added", track:add_processor_by_index(effect, 0, nil, true))
    print("set", ARDOUR.LuaAPI.set_processor_param(effect, 5, 0.75))
else
    effect = track:nth_plugin(0)
end
session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
ARDOUR.LuaAPI.usleep(500000)
print("played", session:transport_sample() > 0)
print("value", (ARDOUR.LuaAPI.get_processor_param(effect, 5, true)))
session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
session:save_state("")
effect, track, session = nil, nil, nil
collectgarbage()
close_session()
