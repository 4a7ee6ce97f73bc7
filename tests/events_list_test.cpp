#include "song/events_list.h"

#include <gtest/gtest.h>

#include "platform/command_ids.h"
#include "song/recording.h"
#include "song/track_rows.h"
#include "support/song_bench.h"

namespace {

class EventsListTest : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    EventsList = &list;
    EventsOpen = 1;
    SongDirty = 0;
  }
  void TearDown() override {
    DropEventRows();
    SongBench::TearDown();
  }
  // The rows of the tracks named, shown as the list would show them, and a row selected.
  void show(std::initializer_list<uint32_t> numbers, int selected = -1) {
    SelectedTrackCount = 0;
    for (uint32_t t : numbers) SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = t;
    RefreshEventsList();
    select(selected);
  }
  void select(int row) {
    list.selected.clear();
    if (row >= 0) list.selected.insert(row);
  }
  MidiEvent& rowEvent(int row) { return *EventRows.at(static_cast<std::size_t>(row)).event; }
  std::string rowText(int row) { return EventText(rowEvent(row)); }
  // The fields of a dialog as it opens on the selected row's event, with some replaced.
  EventFieldTexts fields(uint32_t dialog, const MidiEvent& e, const EventFieldTexts& changes) {
    EventFieldTexts texts = EventDialogTexts(dialog, e);
    for (const auto& [id, text] : changes) texts[id] = text;
    return texts;
  }
  std::string lastMessage() const { return prompts.shown().empty() ? "" : prompts.shown().back().text; }
  int noteOnsSent() const {
    int n = 0;
    for (uint32_t word : sentMessages()) n += (word & 0xF0) == 0x90 && (word >> 16 & 0x7F) != 0;
    return n;
  }

  RecordingList list;
  RecordingList tracks;
};

// ---- rows ----

TEST_F(EventsListTest, TheRowsAreTheSelectedTracksEventsWithoutNoteOffsInTimeOrder) {
  install(1, {ev(0, 0x90, 60, 90), ev(10, 0xB0, 7, 100), ev(30, 0x90, 60, 0)});
  install(4, {ev(5, 0xC0, 3), ev(40, 0xE0, 0, 64)});
  show({1, 4});
  ASSERT_EQ(EventRowCount, 4u);
  EXPECT_EQ(list.repaints, 1);
  EXPECT_EQ(rowEvent(0).status, 0x90);
  EXPECT_EQ(rowEvent(1).status, 0xC0);
  EXPECT_EQ(EventRows[1].track, 4);
  EXPECT_EQ(rowEvent(2).status, 0xB0);
  EXPECT_EQ(rowEvent(3).status, 0xE0);
}

TEST_F(EventsListTest, WithNoTrackSelectedTheListIsEmptiedAndInsertOffersTheCurrentTrack) {
  install(1, {ev(0, 0xB0, 7, 1)});
  show({1});
  ASSERT_EQ(EventRowCount, 1u);
  show({});
  EXPECT_EQ(EventRowCount, 0u);
  EXPECT_EQ(list.clears, 1);
  EXPECT_EQ(prompts.waitDepth(), 0) << "the wait cursor goes back also for an empty list";
  RecordTrack = 6;
  EXPECT_EQ(InsertTrackText(), "7");
}

TEST_F(EventsListTest, AClosedListKeepsNoRows) {
  install(1, {ev(0, 0xB0, 7, 1)});
  EventsOpen = 0;
  show({1});
  EXPECT_TRUE(EventRows.empty());
  EXPECT_EQ(EventRowCount, 0u);
}

TEST_F(EventsListTest, AKeptTakeReplacesItsTracksRowsWhenTheTrackIsSelected) {
  install(2, {ev(0, 0xB0, 7, 1)});
  show({2});
  RecordTrack = 2;
  TakeBuffer[0] = ev(10, 0xC0, 5);
  TakeCount = 1;
  KeepTake();
  ASSERT_EQ(EventRowCount, 1u);
  EXPECT_EQ(EventRows[0].event, Tracks[2].events) << "the rows point into the take's array";
  EXPECT_EQ(rowEvent(0).status, 0xC0);
}

// ---- input ----

TEST_F(EventsListTest, TheListTakesInputOnlyWhileTheTransportStands) {
  EXPECT_TRUE(EventsListTakesInput());
  Playing = 1;
  EXPECT_FALSE(EventsListTakesInput());
  Playing = 0;
  Recording = 1;
  EXPECT_FALSE(EventsListTakesInput());
  Recording = 0;
}

TEST_F(EventsListTest, PickingARowMovesTheSongAndTheClockToItsTimeWithoutTheTracksOffset) {
  install(2, {ev(0, 0xB0, 7, 1), ev(250, 0xB0, 7, 2)});
  Tracks[2].timeOffset = 100;
  show({2}, 1);
  MoveToSelectedEventRow();
  EXPECT_EQ(SongPosition.load(), 250u);
  EXPECT_EQ(TheClock->now.load(), 250u);
  ASSERT_FALSE(bar.counter.empty());
  EXPECT_EQ(bar.counter.back(), 250u);
}

TEST_F(EventsListTest, WithNoRowSelectedPickingDoesNothing) {
  install(2, {ev(0, 0xB0, 7, 1), ev(250, 0xB0, 7, 2)});
  SongPosition = 33;
  show({2});
  const std::size_t drawn = bar.counter.size();
  MoveToSelectedEventRow();
  DeleteSelectedEventRow();
  EXPECT_EQ(SongPosition.load(), 33u);
  EXPECT_EQ(Tracks[2].count, 2u);
  EXPECT_EQ(bar.counter.size(), drawn);
}

// ---- Delete ----

TEST_F(EventsListTest, DeletingANoteTakesItsNoteOffAlong) {
  install(3, {ev(0, 0x90, 60, 90), ev(10, 0xB0, 7, 1), ev(20, 0x90, 60, 0), ev(30, 0x90, 62, 80),
              ev(40, 0x90, 62, 0)});
  TracksList = &tracks;
  TracksOpen = 1;
  show({3}, 0);
  DeleteSelectedEventRow();
  ASSERT_EQ(Tracks[3].count, 3u);
  EXPECT_EQ(Tracks[3].events[0].status, 0xB0);
  EXPECT_EQ(Tracks[3].events[1].value1, 62);
  EXPECT_EQ(Tracks[3].events[1].link, &Tracks[3].events[2]) << "the rest is linked again";
  EXPECT_EQ(Tracks[3].events[2].link, &Tracks[3].events[1]);
  EXPECT_EQ(EventRowCount, 2u);
  EXPECT_EQ(tracks.repaints, 1);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EventsListTest, DeletingAnyOtherEventTakesItAlone) {
  install(3, {ev(0, 0xB0, 7, 1), ev(10, 0xC0, 5), ev(20, 0xB0, 7, 2)});
  show({3}, 1);
  DeleteSelectedEventRow();
  ASSERT_EQ(Tracks[3].count, 2u);
  EXPECT_EQ(Tracks[3].events[1].value2, 2);
  EXPECT_EQ(EventRowCount, 2u);
}

TEST_F(EventsListTest, DeletingATracksLastRowDeletesTheTrack) {
  install(3, {ev(0, 0x90, 60, 90), ev(20, 0x90, 60, 0)});
  install(5, {ev(5, 0xB0, 7, 1)});
  BuildTrackRow(3);
  show({3, 5}, 0);
  SongDirty = 0;
  DeleteSelectedEventRow();
  EXPECT_EQ(Tracks[3].events, nullptr);
  EXPECT_EQ(Tracks[3].count, 0u);
  EXPECT_EQ(TrackRowAt(3), nullptr);
  EXPECT_EQ(ActiveTracks[0], 5u) << "track 3 left the tracks that play";
  ASSERT_EQ(EventRowCount, 1u);
  EXPECT_EQ(EventRows[0].track, 5);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EventsListTest, ALyricOrTempoRowShowsItsTimeAndCanNeitherBeDeletedNorEdited) {
  MidiEvent lyric = ev(120, 0);
  lyric.metaType = META_LYRIC;
  install(2, {lyric, ev(240, 0xB0, 7, 1)});
  show({2}, 0);
  EXPECT_EQ(rowText(0), "Lyric, , , , ,00001:02:000");
  DeleteSelectedEventRow();
  EXPECT_EQ(Tracks[2].count, 2u);
  EXPECT_EQ(SongDirty, 0u);
  EXPECT_EQ(BeginEditEvent().dialog, 0u) << "no dialog for a meta event";
}

TEST_F(EventsListTest, ASystemEventHasNeitherDialogNorIcon) {
  install(2, {ev(0, 0xF8), ev(10, 0xFC)});
  show({2}, 0);
  int kind = 0;
  EventText(rowEvent(0), &kind);
  EXPECT_EQ(kind, 15);
  EXPECT_EQ(EventIcon(kind), 0u);
  EXPECT_EQ(BeginEditEvent().dialog, 0u);
}

// ---- the event dialogs ----

TEST_F(EventsListTest, EachKindOpensItsOwnDialog) {
  EXPECT_EQ(EventDialogOf(0), 0u);
  EXPECT_EQ(EventDialogOf(1), DLG_NOTE_EVENT);
  EXPECT_EQ(EventDialogOf(2), DLG_KEY_AFTERTOUCH_EVENT);
  EXPECT_EQ(EventDialogOf(3), DLG_CONTROLLER_EVENT);
  EXPECT_EQ(EventDialogOf(4), DLG_PATCH_EVENT);
  EXPECT_EQ(EventDialogOf(5), DLG_CHANNEL_AFTERTOUCH_EVENT);
  EXPECT_EQ(EventDialogOf(6), DLG_PITCH_WHEEL_EVENT);
  EXPECT_EQ(EventDialogOf(MetaEventKind), 0u);
  EXPECT_STREQ(EventDialogFormOf(DLG_NOTE_EVENT).title, "Note parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_KEY_AFTERTOUCH_EVENT).title, "Key Aftertouch parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_CONTROLLER_EVENT).title, "Controler parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_PATCH_EVENT).title, "Patch parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_CHANNEL_AFTERTOUCH_EVENT).title, "Channel Aftertouch parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_PITCH_WHEEL_EVENT).title, "Pitch Wheel parameters");
  EXPECT_STREQ(EventDialogFormOf(DLG_NOTE_EVENT).fields[4].label, "&Duración:");
  EXPECT_STREQ(EventDialogFormOf(DLG_CONTROLLER_EVENT).fields[3].label, "Cha&nnel:");
}

TEST_F(EventsListTest, TheNoteDialogShowsNameOctaveVelocityEndAndChannel) {
  install(0, {ev(480, 0x93, 70, 99), ev(600, 0x93, 70, 0)});
  show({0}, 0);
  const EventFieldTexts texts = EventDialogTexts(DLG_NOTE_EVENT, rowEvent(0));
  EXPECT_EQ(texts.at(ID_EVENT_TIME), "00002:01:000");
  EXPECT_EQ(texts.at(ID_EVENT_KEY), "Bb");
  EXPECT_EQ(texts.at(ID_EVENT_OCTAVE), "5");
  EXPECT_EQ(texts.at(ID_EVENT_VELOCITY), "99");
  EXPECT_EQ(texts.at(ID_EVENT_END), "00002:02:000") << "the end, not the length";
  EXPECT_EQ(texts.at(ID_EVENT_CHANNEL), "4");
}

TEST_F(EventsListTest, TheOtherDialogsShowTheirValues) {
  EXPECT_EQ(EventDialogTexts(DLG_KEY_AFTERTOUCH_EVENT, ev(0, 0xA1, 60, 33)),
            (EventFieldTexts{{ID_EVENT_TIME, "00001:01:000"}, {ID_EVENT_CHANNEL, "2"}, {ID_EVENT_PITCH, "60"},
                             {ID_EVENT_VALUE, "33"}}));
  EXPECT_EQ(EventDialogTexts(DLG_CONTROLLER_EVENT, ev(0, 0xB0, 7, 100)),
            (EventFieldTexts{{ID_EVENT_TIME, "00001:01:000"}, {ID_EVENT_CHANNEL, "1"}, {ID_EVENT_CONTROLLER, "7"},
                             {ID_EVENT_VALUE, "100"}}));
  EXPECT_EQ(EventDialogTexts(DLG_PATCH_EVENT, ev(0, 0xCF, 12)).at(ID_EVENT_VALUE), "12");
  EXPECT_EQ(EventDialogTexts(DLG_PATCH_EVENT, ev(0, 0xCF, 12)).at(ID_EVENT_CHANNEL), "16");
  EXPECT_EQ(EventDialogTexts(DLG_CHANNEL_AFTERTOUCH_EVENT, ev(0, 0xD0, 9)).at(ID_EVENT_VALUE), "9");
  EXPECT_EQ(EventDialogTexts(DLG_PITCH_WHEEL_EVENT, ev(0, 0xE0, 0, 64)).at(ID_EVENT_VALUE), "0") << "the centre";
  EXPECT_EQ(EventDialogTexts(DLG_PITCH_WHEEL_EVENT, ev(0, 0xE0, 0, 0)).at(ID_EVENT_VALUE), "-8192");
}

TEST_F(EventsListTest, NoteNamesAreReadInAnyCaseFromTheirFirstThreeCharacters) {
  install(0, {ev(0, 0x90, 60, 90), ev(100, 0x90, 60, 0)});
  show({0}, 0);
  MidiEvent& on = rowEvent(0);
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on, fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "bb"}})), 0u);
  EXPECT_EQ(on.value1, 70);
  EXPECT_EQ(on.link->value1, 70) << "the note-off takes the key too";
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on, fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "A#"}})),
            ID_EVENT_KEY);
  EXPECT_EQ(lastMessage(), "Input does not conform to picture::\nC,C#,D,D#,E,F,F#,G,G#,A,Bb,B");
  EXPECT_EQ(prompts.shown().back().title, "Velmora");
  EXPECT_EQ(prompts.shown().back().style, platform::MB_ICONSTOP);
  EXPECT_EQ(on.value1, 70);
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on, fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "f#"}})), 0u);
  EXPECT_EQ(on.value1, 66);
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on, fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "C#5x"}})),
            ID_EVENT_KEY)
      << "three characters are read, and C#5 is no name";
}

TEST_F(EventsListTest, KeysPast127FoldDownByWholeOctaves) {
  install(0, {ev(0, 0x90, 60, 90), ev(100, 0x90, 60, 0)});
  show({0}, 0);
  MidiEvent& on = rowEvent(0);
  ASSERT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on,
                              fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "G"}, {ID_EVENT_OCTAVE, "10"}})),
            0u);
  EXPECT_EQ(on.value1, 127);
  ASSERT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on,
                              fields(DLG_NOTE_EVENT, on, {{ID_EVENT_KEY, "G#"}, {ID_EVENT_OCTAVE, "10"}})),
            0u);
  EXPECT_EQ(on.value1, 116);
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on, fields(DLG_NOTE_EVENT, on, {{ID_EVENT_OCTAVE, "11"}})),
            ID_EVENT_OCTAVE);
  EXPECT_EQ(lastMessage(), "Value is not in the range 0 to 10.");
}

TEST_F(EventsListTest, AStartAtOrAfterTheEndGivesANoteOneTickLong) {
  install(0, {ev(0, 0x90, 60, 90), ev(100, 0x90, 60, 0)});
  show({0}, 0);
  MidiEvent& on = rowEvent(0);
  MidiEvent* off = on.link;
  ASSERT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on,
                              fields(DLG_NOTE_EVENT, on, {{ID_EVENT_TIME, "2:1:0"}, {ID_EVENT_END, "1:1:5"}})),
            0u);
  EXPECT_EQ(on.time, 480u);
  EXPECT_EQ(off->time, 481u);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EventsListTest, TheNoteDialogWritesEachPartAsItPassesAndStopsAtTheRefusedOne) {
  install(0, {ev(0, 0x90, 60, 90), ev(100, 0x90, 60, 0)});
  show({0}, 0);
  MidiEvent& on = rowEvent(0);
  MidiEvent* off = on.link;
  // The channel is refused: the times are in, key and velocity are not.
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on,
                              fields(DLG_NOTE_EVENT, on,
                                     {{ID_EVENT_TIME, "1:2:0"}, {ID_EVENT_END, "1:3:0"}, {ID_EVENT_KEY, "D"},
                                      {ID_EVENT_CHANNEL, "17"}, {ID_EVENT_VELOCITY, "5"}})),
            ID_EVENT_CHANNEL);
  EXPECT_EQ(on.time, 120u);
  EXPECT_EQ(off->time, 240u);
  EXPECT_EQ(on.value1, 60);
  EXPECT_EQ(on.value2, 90);
  EXPECT_EQ(SongDirty, 0u);
  // The velocity is refused: channel and key are in as well.
  EXPECT_EQ(AcceptEventDialog(DLG_NOTE_EVENT, on,
                              fields(DLG_NOTE_EVENT, on,
                                     {{ID_EVENT_KEY, "D"}, {ID_EVENT_CHANNEL, "3"}, {ID_EVENT_VELOCITY, "128"}})),
            ID_EVENT_VELOCITY);
  EXPECT_EQ(on.status, 0x92);
  EXPECT_EQ(off->status, 0x92);
  EXPECT_EQ(on.value1, 62);
  EXPECT_EQ(off->value1, 62);
  EXPECT_EQ(on.value2, 90);
}

TEST_F(EventsListTest, EachDialogReadsTheTimeThenItsNumbersInOrderAndKeepsWhatPassed) {
  install(0, {ev(0, 0xA0, 60, 10), ev(5, 0xB0, 7, 64), ev(6, 0xC0, 1), ev(7, 0xD0, 2), ev(8, 0xE0, 0, 64)});
  show({0});
  MidiEvent& key = rowEvent(0);
  EXPECT_EQ(AcceptEventDialog(DLG_KEY_AFTERTOUCH_EVENT, key,
                              {{ID_EVENT_TIME, "1:1:50"}, {ID_EVENT_CHANNEL, "4"}, {ID_EVENT_PITCH, "300"},
                               {ID_EVENT_VALUE, "1"}}),
            ID_EVENT_PITCH);
  EXPECT_EQ(key.time, 50u);
  EXPECT_EQ(key.status, 0xA3);
  EXPECT_EQ(key.value1, 60);
  EXPECT_EQ(key.value2, 10);
  MidiEvent& controller = rowEvent(1);
  EXPECT_EQ(AcceptEventDialog(DLG_CONTROLLER_EVENT, controller,
                              {{ID_EVENT_TIME, "1:1:5"}, {ID_EVENT_CHANNEL, "2"}, {ID_EVENT_CONTROLLER, "10"},
                               {ID_EVENT_VALUE, "-1"}}),
            ID_EVENT_VALUE);
  EXPECT_EQ(controller.status, 0xB1);
  EXPECT_EQ(controller.value1, 10);
  EXPECT_EQ(controller.value2, 64);
  MidiEvent& patch = rowEvent(2);
  EXPECT_EQ(AcceptEventDialog(DLG_PATCH_EVENT, patch,
                              {{ID_EVENT_TIME, "1:1:6"}, {ID_EVENT_CHANNEL, "0"}, {ID_EVENT_VALUE, "3"}}),
            ID_EVENT_CHANNEL);
  EXPECT_EQ(patch.value1, 1);
  EXPECT_EQ(lastMessage(), "Value is not in the range 1 to 16.");
  MidiEvent& pressure = rowEvent(3);
  EXPECT_EQ(AcceptEventDialog(DLG_CHANNEL_AFTERTOUCH_EVENT, pressure,
                              {{ID_EVENT_TIME, "1:1:7"}, {ID_EVENT_CHANNEL, "16"}, {ID_EVENT_VALUE, "77"}}),
            0u);
  EXPECT_EQ(pressure.status, 0xDF);
  EXPECT_EQ(pressure.value1, 77);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EventsListTest, TheControlerDialogLetsAChannelOutside1To16SpoilTheStatus) {
  install(0, {ev(0, 0xB0, 7, 64)});
  show({0});
  MidiEvent& e = rowEvent(0);
  EXPECT_EQ(AcceptEventDialog(DLG_CONTROLLER_EVENT, e, fields(DLG_CONTROLLER_EVENT, e, {{ID_EVENT_CHANNEL, "0"}})),
            0u);
  EXPECT_EQ(e.status, 0xFF);
  e.status = 0xB0;
  EXPECT_EQ(AcceptEventDialog(DLG_CONTROLLER_EVENT, e, fields(DLG_CONTROLLER_EVENT, e, {{ID_EVENT_CHANNEL, "18"}})),
            0u);
  EXPECT_EQ(e.status, 0xB0 | 17);
}

TEST_F(EventsListTest, ThePitchWheelTakesMinus8192To8191AroundItsCentre) {
  install(0, {ev(0, 0xE0, 5, 5)});
  show({0});
  MidiEvent& e = rowEvent(0);
  const auto wheel = [&](const char* value) {
    return AcceptEventDialog(DLG_PITCH_WHEEL_EVENT, e, fields(DLG_PITCH_WHEEL_EVENT, e, {{ID_EVENT_VALUE, value}}));
  };
  EXPECT_EQ(wheel("0"), 0u);
  EXPECT_EQ(e.value1, 0);
  EXPECT_EQ(e.value2, 64);
  EXPECT_EQ(rowText(0), " 1,Wheel, ,Valor ,   0,00001:01:000, ");
  EXPECT_EQ(wheel("8191"), 0u);
  EXPECT_EQ(e.value1, 127);
  EXPECT_EQ(e.value2, 127);
  EXPECT_EQ(wheel("-8192"), 0u);
  EXPECT_EQ(e.value1, 0);
  EXPECT_EQ(e.value2, 0);
  EXPECT_EQ(wheel("8192"), ID_EVENT_VALUE);
  EXPECT_EQ(lastMessage(), "Value is not in the range -8192 to 8191.");
}

// ---- editing a row ----

TEST_F(EventsListTest, AChangedTimeResortsTheTrackAndTheListKeepsItsRowNumber) {
  install(0, {ev(0, 0xB0, 7, 1), ev(10, 0xB0, 7, 2), ev(20, 0xB0, 7, 3)});
  show({0}, 0);
  EventEdit edit = BeginEditEvent();
  ASSERT_EQ(edit.dialog, DLG_CONTROLLER_EVENT);
  ASSERT_EQ(AcceptEventDialog(edit.dialog, *edit.event,
                              fields(edit.dialog, *edit.event, {{ID_EVENT_TIME, "1:1:15"}})),
            0u);
  EndEditEvent(edit, true);
  EXPECT_EQ(Tracks[0].events[0].value2, 2);
  EXPECT_EQ(Tracks[0].events[1].value2, 1) << "the event moved behind the one at 10";
  EXPECT_EQ(Tracks[0].events[1].time, 15u);
  EXPECT_EQ(list.selected, (std::set<int>{0})) << "the row number stays, and shows another event";
  EXPECT_EQ(rowEvent(0).value2, 2);
}

TEST_F(EventsListTest, AVelocityOf0TurnsANoteIntoANoteOffWhoseRowGoesAndTheCountFollows) {
  install(0, {ev(0, 0x90, 60, 90), ev(10, 0x90, 60, 0), ev(20, 0xB0, 7, 1)});
  show({0}, 0);
  ASSERT_EQ(EventRowCount, 2u);
  EventEdit edit = BeginEditEvent();
  ASSERT_EQ(edit.dialog, DLG_NOTE_EVENT);
  ASSERT_EQ(AcceptEventDialog(edit.dialog, *edit.event,
                              fields(edit.dialog, *edit.event, {{ID_EVENT_VELOCITY, "0"}})),
            0u)
      << "a velocity of 0 is accepted";
  EndEditEvent(edit, true);
  EXPECT_EQ(EventRowCount, 1u);
  EXPECT_EQ(EventRows.size(), 1u);
}

TEST_F(EventsListTest, CancelAfterARefusalKeepsThePartsWrittenAndTheTrackInOrder) {
  install(0, {ev(0, 0xB0, 7, 1), ev(10, 0xB0, 7, 2)});
  show({0}, 0);
  SongDirty = 0;
  EventEdit edit = BeginEditEvent();
  ASSERT_EQ(AcceptEventDialog(edit.dialog, *edit.event,
                              fields(edit.dialog, *edit.event, {{ID_EVENT_TIME, "1:1:30"}, {ID_EVENT_VALUE, "200"}})),
            ID_EVENT_VALUE);
  EndEditEvent(edit, false);
  EXPECT_EQ(Tracks[0].events[0].value2, 2);
  EXPECT_EQ(Tracks[0].events[1].time, 30u) << "the time written stays, and the track is sorted again";
  EXPECT_EQ(SongDirty, 1u);
  EXPECT_EQ(rowEvent(1).time, 30u);
}

TEST_F(EventsListTest, CancelWithNothingWrittenChangesNothing) {
  install(0, {ev(0, 0xB0, 7, 1)});
  show({0}, 0);
  const int repaints = list.repaints;
  EventEdit edit = BeginEditEvent();
  EndEditEvent(edit, false);
  EXPECT_EQ(list.repaints, repaints);
  EXPECT_EQ(SongDirty, 0u);
}

// ---- Insert ----

TEST_F(EventsListTest, TheInsertTrackFieldShowsTheSelectedRowsTrackCountedFrom1) {
  install(2, {ev(0, 0xB0, 7, 1)});
  install(9, {ev(5, 0xB0, 7, 1)});
  show({2, 9}, 1);
  EXPECT_EQ(InsertTrackText(), "10");
  select(-1);
  EXPECT_EQ(InsertTrackText(), "3") << "row 0 with no row selected";
}

TEST_F(EventsListTest, TheInsertTrackNumberWrapsIntoAByte) {
  EventInsert insert;
  PrepareInsertEvent(insert, "0", 0);
  EXPECT_EQ(PasteTrack, 255);
  PrepareInsertEvent(insert, "257", 0);
  EXPECT_EQ(PasteTrack, 0);
  PrepareInsertEvent(insert, "12", 0);
  EXPECT_EQ(PasteTrack, 11);
}

TEST_F(EventsListTest, EachInsertButtonMakesItsEventInItsDialog) {
  struct Expected {
    uint32_t dialog, count;
    uint8_t status, value1, value2;
  };
  const Expected expected[] = {{DLG_NOTE_EVENT, 2, 0x90, 64, 64},       {DLG_KEY_AFTERTOUCH_EVENT, 1, 0xA0, 64, 0},
                               {DLG_CONTROLLER_EVENT, 1, 0xB0, 7, 64},  {DLG_PATCH_EVENT, 1, 0xC0, 0, 0},
                               {DLG_CHANNEL_AFTERTOUCH_EVENT, 1, 0xD0, 0, 0}, {DLG_PITCH_WHEEL_EVENT, 1, 0xE0, 0, 64}};
  for (int kind = 0; kind < 6; ++kind) {
    EventInsert insert;
    PrepareInsertEvent(insert, "1", kind);
    const Expected& e = expected[kind];
    EXPECT_EQ(insert.dialog, e.dialog);
    EXPECT_EQ(insert.count, e.count);
    EXPECT_EQ(insert.events[0].status, e.status);
    EXPECT_EQ(insert.events[0].value1, e.value1);
    EXPECT_EQ(insert.events[0].value2, e.value2);
    EXPECT_EQ(insert.events[0].time, 0u) << "an empty list's times are 0 and 1";
    EXPECT_EQ(insert.events[0].link, &insert.events[1]);
  }
  EventInsert note;
  PrepareInsertEvent(note, "1", 0);
  EXPECT_EQ(note.events[1].time, 1u);
  EXPECT_EQ(note.events[1].value2, 0) << "the note's end";
}

TEST_F(EventsListTest, InsertTakesItsTimesFromTheSelectedRowsEventAndItsEnd) {
  install(2, {ev(100, 0x90, 60, 90), ev(300, 0x90, 60, 0), ev(400, 0xC0, 3)});
  show({2}, 0);
  EventInsert note;
  PrepareInsertEvent(note, InsertTrackText(), 0);
  EXPECT_EQ(note.events[0].time, 100u);
  EXPECT_EQ(note.events[1].time, 300u);
  select(1);
  EventInsert patch;
  PrepareInsertEvent(patch, InsertTrackText(), 3);
  EXPECT_EQ(patch.events[0].time, 400u) << "an event's link is itself";
}

TEST_F(EventsListTest, AnInsertedNoteGoesIntoAnEmptyTrackWithItsRowAndSelection) {
  TracksList = &tracks;
  TracksOpen = 1;
  show({});
  EventInsert insert;
  PrepareInsertEvent(insert, "5", 0);
  MidiEvent& on = insert.events[0];
  ASSERT_EQ(AcceptEventDialog(insert.dialog, on,
                              fields(insert.dialog, on, {{ID_EVENT_TIME, "1:2:0"}, {ID_EVENT_END, "1:4:0"}})),
            0u);
  FinishInsertEvent(insert, true);
  ASSERT_EQ(Tracks[4].count, 2u);
  EXPECT_EQ(Tracks[4].events[0].time, 120u);
  EXPECT_EQ(Tracks[4].events[1].time, 360u);
  EXPECT_EQ(Tracks[4].events[0].link, &Tracks[4].events[1]);
  EXPECT_NE(TrackRowAt(4), nullptr);
  EXPECT_EQ(tracks.selected, (std::set<int>{4}));
  ASSERT_EQ(SelectedTrackCount, 1);
  ASSERT_EQ(EventRowCount, 1u);
  EXPECT_EQ(rowText(0), " 1,Nota,E 5,Velocity,  64,00001:02:000,00001:04:000");
}

TEST_F(EventsListTest, AnInsertedEventMergesAfterTheTracksOwnAtEqualTimes) {
  install(2, {ev(0, 0xB0, 7, 1), ev(50, 0xB0, 7, 2)});
  show({2}, 1);
  EventInsert insert;
  PrepareInsertEvent(insert, InsertTrackText(), 3);
  ASSERT_EQ(AcceptEventDialog(insert.dialog, insert.events[0],
                              fields(insert.dialog, insert.events[0], {{ID_EVENT_VALUE, "19"}})),
            0u);
  FinishInsertEvent(insert, true);
  ASSERT_EQ(Tracks[2].count, 3u);
  EXPECT_EQ(Tracks[2].events[1].status, 0xB0);
  EXPECT_EQ(Tracks[2].events[2].status, 0xC0);
  EXPECT_EQ(Tracks[2].events[2].value1, 19);
  EXPECT_EQ(EventRowCount, 3u) << "the track is selected, so the new row shows";
}

TEST_F(EventsListTest, WithTheManagerClosedAnEventInsertedIntoAnUnselectedTrackDoesNotShow) {
  install(2, {ev(0, 0xB0, 7, 1)});
  show({2}, 0);
  EventInsert insert;
  PrepareInsertEvent(insert, "8", 4);
  FinishInsertEvent(insert, true);
  EXPECT_EQ(Tracks[7].count, 1u);
  EXPECT_EQ(EventRowCount, 1u);
}

TEST_F(EventsListTest, ACancelledInsertLeavesTheSongAsItWas) {
  show({});
  const int32_t active = ActiveTrackCount;
  EventInsert insert;
  PrepareInsertEvent(insert, "1", 0);
  FinishInsertEvent(insert, false);
  EXPECT_EQ(Tracks[0].events, nullptr);
  EXPECT_EQ(ActiveTrackCount, active);
}

TEST_F(EventsListTest, ANoteInsertedIntoATrackEmptiedByDeletionPlaysOnce) {
  install(3, {ev(0, 0x90, 60, 90), ev(60, 0x90, 60, 0)});
  show({3}, 0);
  const int32_t active = ActiveTrackCount;
  DeleteSelectedEventRow();
  ASSERT_EQ(Tracks[3].events, nullptr);
  EventInsert insert;
  PrepareInsertEvent(insert, "4", 0);
  ASSERT_EQ(AcceptEventDialog(insert.dialog, insert.events[0],
                              fields(insert.dialog, insert.events[0], {{ID_EVENT_END, "1:1:60"}})),
            0u);
  FinishInsertEvent(insert, true);
  ASSERT_EQ(ActiveTrackCount, active) << "the track stands once among the tracks that play";
  devices.clearSent();
  TransportCommand(CMD_PLAY);
  playToTheEnd();
  EXPECT_EQ(noteOnsSent(), 1);
}

}  // namespace
