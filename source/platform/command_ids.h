#pragma once
// The ids by which windows, controls and the engine address each other: the
// messages of the controls, the commands of the Control Bar and of the
// frame's menus, and the ids of dialogs and of the fields inside them. They
// are the resource numbers every layer agrees on, declared here once.

#include <cstdint>

// A command reaches its window as WM_COMMAND: param1's low word is the
// command's or control's id, its high word a control's notification code.
inline constexpr uint32_t WM_COMMAND = 0x0111;
inline constexpr uint32_t WM_HSCROLL = 0x0114;
inline constexpr uint32_t WM_VSCROLL = 0x0115;

// The messages of our controls.
inline constexpr uint32_t BUTTON_SET_STATE = 1324;  // param1 0 or 1: raised or pressed
inline constexpr uint32_t BAR_SET_VALUE = 1426;
inline constexpr uint32_t BAR_GET_VALUE = 1427;
inline constexpr uint32_t BAR_GET_TRACK = 1430;
inline constexpr uint32_t BAR_SET_COLOR = 1431;
inline constexpr uint32_t HBAR_INIT = 1124;
inline constexpr uint32_t HBAR_SET_VALUE = 1126;
inline constexpr uint32_t HBAR_GET_VALUE = 1128;
// A horizontal bar asks its host for its colour; the answer is 0 for the
// bar's own, or the colour as 0x00BBGGRR plus 1 << 24.
inline constexpr uint32_t HBAR_GET_COLOR = 1131;
// The scroll codes of the up-down control: a new position, the end of a scroll.
inline constexpr uint32_t SB_THUMBPOSITION = 4;
inline constexpr uint32_t SB_THUMBTRACK = 5;
inline constexpr uint32_t SB_ENDSCROLL = 8;
// A bar's report codes: 0 while the user drags, non-zero for a finished move.
inline constexpr uint32_t BAR_TRACKING = 0;
inline constexpr uint32_t BAR_MOVED = 1;

// The Control Bar's buttons; each is also the command it sends.
inline constexpr uint32_t CMD_STOP = 100;
inline constexpr uint32_t CMD_PLAY = 101;
inline constexpr uint32_t CMD_REWIND = 102;
inline constexpr uint32_t CMD_GO_TO_END = 103;
inline constexpr uint32_t CMD_RECORD = 104;
inline constexpr uint32_t CMD_QUANTIZE_RECORD = 105;
inline constexpr uint32_t CMD_PANIC = 106;
inline constexpr uint32_t CMD_MIDI_SYNC = 107;
inline constexpr uint32_t CMD_INTERNAL_CLOCK = 108;
inline constexpr uint32_t CMD_METRONOME = 109;
inline constexpr uint32_t CMD_LINK = 110;
inline constexpr uint32_t CMD_GENERATE = 200;

// The Control Bar's other controls: the meter and tempo fields, the tempo's
// up-down control and the region's fields.
inline constexpr uint32_t ID_TEMPO_UPDOWN = 1119;
inline constexpr uint32_t ID_TEMPO_FIELD = 1175;
inline constexpr uint32_t ID_NUMERATOR_FIELD = 1180;
inline constexpr uint32_t ID_DENOMINATOR_FIELD = 1181;
inline constexpr uint32_t ID_FROM_FIELD = 2050;
inline constexpr uint32_t ID_TO_FIELD = 2051;

// The frame's menu commands. File:
inline constexpr uint32_t CMD_NEW_SONG = 24331;
inline constexpr uint32_t CMD_OPEN_SONG = 24332;
inline constexpr uint32_t CMD_SAVE_SONG = 24333;
inline constexpr uint32_t CMD_SAVE_SONG_AS = 24334;
inline constexpr uint32_t CMD_OPEN_SETUP = 1616;
inline constexpr uint32_t CMD_SAVE_SETUP_AS = 1617;
inline constexpr uint32_t CMD_EXIT = 24310;
// View:
inline constexpr uint32_t CMD_VIEW_TRACKS = 1619;
inline constexpr uint32_t CMD_VIEW_EVENTS = 1620;
inline constexpr uint32_t CMD_VIEW_CONTROLLERS = 1621;
inline constexpr uint32_t CMD_VIEW_LYRICS = 1628;
inline constexpr uint32_t CMD_VIEW_CONTROL_PANEL = 1624;
inline constexpr uint32_t CMD_VIEW_DISTRIBUTIONS = 1623;
inline constexpr uint32_t CMD_VIEW_FUNCTIONS = 1622;
inline constexpr uint32_t CMD_VIEW_BOARDS = 1625;
inline constexpr uint32_t CMD_VIEW_BANKS = 1626;
// Realtime:
inline constexpr uint32_t CMD_QUANTIZE_RECORD_SETTINGS = 1608;
// Select:
inline constexpr uint32_t CMD_SELECT_FROM = 1184;
inline constexpr uint32_t CMD_SELECT_TO = 1185;
inline constexpr uint32_t CMD_SELECT_FROM_NOW = 1190;
inline constexpr uint32_t CMD_SELECT_TO_NOW = 1191;
inline constexpr uint32_t CMD_SELECT_FROM_HOME = 1192;
inline constexpr uint32_t CMD_SELECT_TO_END = 1193;
// Goto:
inline constexpr uint32_t CMD_GO_TO_TIME = 1178;
inline constexpr uint32_t CMD_GO_TO_BEGINNING = 1194;
inline constexpr uint32_t CMD_GO_TO_SONG_END = 1195;
// Edit:
inline constexpr uint32_t CMD_COPY = 1186;
inline constexpr uint32_t CMD_CUT = 1187;
inline constexpr uint32_t CMD_PASTE = 1188;
inline constexpr uint32_t CMD_QUANTIZE = 1609;
inline constexpr uint32_t CMD_LENGTH = 1614;
inline constexpr uint32_t CMD_TRANSPOSE = 1613;
inline constexpr uint32_t CMD_VELOCITY = 1612;
inline constexpr uint32_t CMD_SLIDE = 1611;
// Track:
inline constexpr uint32_t CMD_TRACK_DELETE = 1189;
inline constexpr uint32_t CMD_TRACK_PROPERTIES = 1196;
inline constexpr uint32_t CMD_TRACK_SELECT = 1197;
// Settings:
inline constexpr uint32_t CMD_MENU_LINK = 1618;
inline constexpr uint32_t CMD_SEED = 1627;
inline constexpr uint32_t CMD_TEMPO = 1606;
inline constexpr uint32_t CMD_METER = 1610;
inline constexpr uint32_t CMD_METRONOME_SETTINGS = 1615;
inline constexpr uint32_t CMD_MENU_INTERNAL_CLOCK = 1600;
inline constexpr uint32_t CMD_MENU_MIDI_SYNC = 1601;
inline constexpr uint32_t CMD_MIDI_DEVICES = 1554;
inline constexpr uint32_t CMD_MIDI_THRU = 1555;
inline constexpr uint32_t CMD_RESOLUTION = 1607;
inline constexpr uint32_t CMD_INPUT_FILTERS = 1422;
inline constexpr uint32_t CMD_OUTPUT_FILTERS = 1522;
// Window:
inline constexpr uint32_t CMD_ARRANGE = 24360;  // a hint of the string table without a menu entry
inline constexpr uint32_t CMD_CASCADE = 24361;
inline constexpr uint32_t CMD_TILE = 24362;
inline constexpr uint32_t CMD_ARRANGE_ICONS = 24364;
inline constexpr uint32_t CMD_CLOSE_ALL = 24365;
inline constexpr uint32_t CMD_FIRST_CHILD_WINDOW = 4100;  // the Window menu's list of views
// Help:
inline constexpr uint32_t CMD_HELP_CONTENTS = 1202;
inline constexpr uint32_t CMD_HELP_USING = 1203;
// The Realtime menu's keys for the Control Bar's transport buttons.
inline constexpr uint32_t CMD_KEY_PLAY_STOP = 1750;
inline constexpr uint32_t CMD_KEY_RECORD = 1751;
inline constexpr uint32_t CMD_KEY_GENERATE = 1752;
// File > Open recent: its entries, newest first.
inline constexpr uint32_t CMD_FIRST_RECENT_FILE = 1760;
inline constexpr uint32_t CMD_ABOUT = 2009;
inline constexpr uint32_t CMD_ABOUT_HINT = 2008;    // a second hint of the string table for About
inline constexpr uint32_t CMD_FILE_MENU_HINT = 65535;  // the File menu's own hint

// Dialogs, and the fields inside them.
inline constexpr uint32_t DLG_QUANTIZE_FILTERS = 101;
inline constexpr uint32_t DLG_QUANTIZE_RECORD = 102;
inline constexpr uint32_t DLG_INPUT_FILTERS = 103;
inline constexpr uint32_t DLG_OUTPUT_FILTERS = 104;
inline constexpr uint32_t DLG_TEMPO = 105;
inline constexpr uint32_t DLG_FROM = 106;
inline constexpr uint32_t DLG_TO = 107;
inline constexpr uint32_t DLG_GO_TO = 108;
inline constexpr uint32_t DLG_RESOLUTION = 109;
inline constexpr uint32_t DLG_SEED = 130;
inline constexpr uint32_t ID_RESOLUTION_FIELD = 1176;
inline constexpr uint32_t ID_QUANTIZE_RESOLUTION_FIELD = 1177;
inline constexpr uint32_t ID_GO_TO_FIELD = 1179;
inline constexpr uint32_t ID_SEED_FIELD = 517;
inline constexpr uint32_t ID_METER_DENOMINATOR = 2101;
inline constexpr uint32_t ID_METER_NUMERATOR = 2102;
inline constexpr uint32_t ID_DEVICES_IN_LIST = 1106;
inline constexpr uint32_t ID_DEVICES_OUT_LIST = 1107;
inline constexpr uint32_t ID_DEVICES_IN_NAME = 1108;
inline constexpr uint32_t ID_DEVICES_OUT_NAME = 1109;
inline constexpr uint32_t ID_ABOUT_MAIL_TO = 100;
inline constexpr uint32_t ID_ABOUT_HTTP = 101;
inline constexpr uint32_t ID_ABOUT_PRODUCT = 22001;
inline constexpr uint32_t ID_ABOUT_COPYRIGHT = 22002;
inline constexpr uint32_t ID_ABOUT_SPECIAL = 22003;
inline constexpr uint32_t ID_QUANTIZE_FILTERS_BUTTON = 1707;  // in the Quantizar dialog
// The filter dialogs' check boxes: base + bit of the filter word.
inline constexpr uint32_t ID_INPUT_FILTER_BOXES = 1400;
inline constexpr uint32_t ID_OUTPUT_FILTER_BOXES = 1500;
inline constexpr uint32_t ID_QUANTIZE_FILTER_BOXES = 1700;

// The Control Panel: five columns (notes, velocity, voices, density, length),
// each with its sum, its two bound numbers and its two vertical bars (upper
// first); the channel buttons; the Overlap button; the two horizontal bars
// with their numbers; and the Pitch Selection Settings button and fields.
inline constexpr uint32_t ID_PANEL_FIRST_BOUND = 1231;  // 1231..1240, by bar - ID_PANEL_FIRST_BAR
inline constexpr uint32_t ID_PANEL_TIME_BASE_NUMBER = 1241;
inline constexpr uint32_t ID_PANEL_FIRST_SUM = 1242;  // 1242..1246, by column
inline constexpr uint32_t ID_PANEL_LAST_SUM = 1246;
inline constexpr uint32_t ID_PANEL_FUNCTIONS_RATE_NUMBER = 1247;
inline constexpr uint32_t ID_PANEL_FIRST_BAR = 1280;  // 1280..1289: upper and lower bound of each column
inline constexpr uint32_t ID_PANEL_LAST_BAR = 1289;
inline constexpr uint32_t ID_PANEL_TIME_CONTROL_BAR = 1300;
inline constexpr uint32_t ID_PANEL_FUNCTIONS_RATE_BAR = 1301;
inline constexpr uint32_t ID_PANEL_FIRST_CHANNEL = 201;  // 201..216: channels 1 to 16
inline constexpr uint32_t ID_PANEL_LAST_CHANNEL = 216;
inline constexpr uint32_t ID_PANEL_OVERLAP = 350;
inline constexpr uint32_t ID_PANEL_PITCH_SETTINGS = 404;
inline constexpr uint32_t ID_PITCH_FROM_NOTE = 513;
inline constexpr uint32_t ID_PITCH_MINIMUM = 101;
inline constexpr uint32_t ID_PITCH_MAXIMUM = 102;

// The Distributions window: the view buttons (Voices is 204, Length 202), the
// load and save buttons of the shown table, and the "x:", "y:" and title labels.
inline constexpr uint32_t ID_DIST_NOTES = 200;
inline constexpr uint32_t ID_DIST_VELOCITY = 201;
inline constexpr uint32_t ID_DIST_LENGTH = 202;
inline constexpr uint32_t ID_DIST_DENSITY = 203;
inline constexpr uint32_t ID_DIST_VOICES = 204;
inline constexpr uint32_t ID_DIST_X_LABEL = 2550;
inline constexpr uint32_t ID_DIST_Y_LABEL = 2551;
inline constexpr uint32_t ID_DIST_TITLE_LABEL = 2552;
// The load and save buttons of the curve windows (Distributions, Functions).
inline constexpr uint32_t ID_CURVE_LOAD = 402;
inline constexpr uint32_t ID_CURVE_SAVE = 403;
// The "x:" and "y:" labels of the Boards and Functions windows.
inline constexpr uint32_t ID_CURVE_X_LABEL = 3000;
inline constexpr uint32_t ID_CURVE_Y_LABEL = 3001;
// Opens the Distributions window from the Control Panel.
inline constexpr uint32_t ID_PANEL_DISTRIBUTIONS = 405;

// The Boards window's "store" buttons, one for each board.
inline constexpr uint32_t ID_BOARD_FIRST_STORE = 301;
inline constexpr uint32_t ID_BOARD_LAST_STORE = 310;
// The Boards window's "on" buttons: five Pitch Wheel boards, then five controller boards.
inline constexpr uint32_t ID_PITCH_BOARD_FIRST_ON = 350;
inline constexpr uint32_t ID_CONTROLLER_BOARD_FIRST_ON = 355;
inline constexpr uint32_t ID_BOARD_LAST_ON = 359;
// The Functions window's "on" buttons, one for each function array.
inline constexpr uint32_t ID_FUNCTION_FIRST_ON = 350;
inline constexpr uint32_t ID_FUNCTION_LAST_ON = 359;
// The Functions window's apply buttons, its scroll control and its settings
// button; the Functions Settings dialog's radios, length field and View boxes.
inline constexpr uint32_t ID_FUNCTION_FIRST_APPLY = 301;
inline constexpr uint32_t ID_FUNCTION_LAST_APPLY = 310;
inline constexpr uint32_t ID_FUNCTIONS_SCROLL = 600;
inline constexpr uint32_t ID_FUNCTIONS_SETTINGS = 404;
inline constexpr uint32_t ID_FUNCTIONS_PERIODIC = 100;
inline constexpr uint32_t ID_FUNCTIONS_NON_PERIODIC = 101;
inline constexpr uint32_t ID_FUNCTIONS_LENGTH = 102;
inline constexpr uint32_t ID_FUNCTIONS_FIRST_VIEW = 103;  // 103..112, by function

// The Banks window's buttons, the Bank Name command, the list, and the Bank
// Name dialog's field.
inline constexpr uint32_t ID_BANK_RECEIVE = 500;
inline constexpr uint32_t ID_BANK_SEND = 501;
inline constexpr uint32_t ID_BANK_SAVE = 502;
inline constexpr uint32_t ID_BANK_LOAD = 503;
inline constexpr uint32_t ID_BANK_DELETE = 504;
inline constexpr uint32_t ID_BANK_NAME = 505;
inline constexpr uint32_t ID_BANK_LIST = 506;
inline constexpr uint32_t ID_BANK_NAME_FIELD = 2152;

// The Tracks dialog (117, "Datos") and its fields.
inline constexpr uint32_t DLG_TRACK = 117;
inline constexpr uint32_t ID_TRACK_NAME = 101;
inline constexpr uint32_t ID_TRACK_PLAY = 102;
inline constexpr uint32_t ID_TRACK_KEY = 103;
inline constexpr uint32_t ID_TRACK_VELOCITY = 104;
inline constexpr uint32_t ID_TRACK_TIME = 105;
inline constexpr uint32_t ID_TRACK_REPEATS = 107;
inline constexpr uint32_t ID_TRACK_CHANNEL = 108;
inline constexpr uint32_t ID_TRACK_PAN = 109;
inline constexpr uint32_t ID_TRACK_PATCH = 110;
inline constexpr uint32_t ID_TRACK_VOLUME = 111;

// The Events list's dialogs: one per kind of event, and Insert (129).
inline constexpr uint32_t DLG_NOTE_EVENT = 120;
inline constexpr uint32_t DLG_KEY_AFTERTOUCH_EVENT = 124;
inline constexpr uint32_t DLG_CONTROLLER_EVENT = 125;
inline constexpr uint32_t DLG_PATCH_EVENT = 126;
inline constexpr uint32_t DLG_CHANNEL_AFTERTOUCH_EVENT = 127;
inline constexpr uint32_t DLG_PITCH_WHEEL_EVENT = 128;
inline constexpr uint32_t DLG_EVENT_INSERT = 129;
inline constexpr uint32_t ID_EVENT_TIME = 1107;
inline constexpr uint32_t ID_EVENT_PITCH = 513;
inline constexpr uint32_t ID_EVENT_VELOCITY = 514;
inline constexpr uint32_t ID_EVENT_END = 515;
inline constexpr uint32_t ID_EVENT_CHANNEL = 516;
inline constexpr uint32_t ID_EVENT_VALUE = 517;
inline constexpr uint32_t ID_EVENT_CONTROLLER = 518;
inline constexpr uint32_t ID_EVENT_KEY = 519;
inline constexpr uint32_t ID_EVENT_OCTAVE = 520;
inline constexpr uint32_t ID_INSERT_FIRST_KIND = 2114;  // 2114..2119, one radio button per kind
inline constexpr uint32_t ID_INSERT_TRACK = 2121;

// The region dialogs: Copy (110), Cut (111) and Paste (112).
inline constexpr uint32_t DLG_COPY = 110;
inline constexpr uint32_t DLG_CUT = 111;
inline constexpr uint32_t DLG_PASTE = 112;
inline constexpr uint32_t ID_REGION_FROM = 2100;
inline constexpr uint32_t ID_REGION_TO = 2103;
inline constexpr uint32_t ID_CUT_DELETE_HOLE = 1150;
inline constexpr uint32_t ID_PASTE_REPETITIONS = 2000;
inline constexpr uint32_t ID_PASTE_TIME = 2001;
inline constexpr uint32_t ID_PASTE_TRACK = 2002;
inline constexpr uint32_t ID_PASTE_BLEND = 2003;  // 2004 Replace, 2005 Insert

// The transforms' dialogs: Quantize (118), Length (119), Slide (121),
// Transpose (122) and Velocity (123). All have the region's 2100 and 2103.
inline constexpr uint32_t DLG_QUANTIZE = 118;
inline constexpr uint32_t DLG_LENGTH = 119;
inline constexpr uint32_t DLG_SLIDE = 121;
inline constexpr uint32_t DLG_TRANSPOSE = 122;
inline constexpr uint32_t DLG_VELOCITY = 123;
inline constexpr uint32_t ID_QUANTIZE_RESOLUTION = 2013;
inline constexpr uint32_t ID_QUANTIZE_STRENGTH = 2012;
inline constexpr uint32_t ID_QUANTIZE_SWING = 2011;
inline constexpr uint32_t ID_QUANTIZE_WINDOW = 2010;
inline constexpr uint32_t ID_QUANTIZE_OFFSET = 2009;
inline constexpr uint32_t ID_CHANGE_START = 2008;
inline constexpr uint32_t ID_CHANGE_DURATIONS = 128;
inline constexpr uint32_t ID_LENGTH_PERCENTAGE = 117;
inline constexpr uint32_t ID_TRANSFORM_AMOUNT = 1552;  // Slide's and Transpose's amount
inline constexpr uint32_t ID_SLIDE_MEASURES = 1553;
inline constexpr uint32_t ID_SLIDE_TICKS = 1554;
inline constexpr uint32_t ID_VELOCITY_BEGIN = 103;
inline constexpr uint32_t ID_VELOCITY_END = 104;

// The Controlers binding dialog (113): the controller and the channel lists.
inline constexpr uint32_t DLG_CONTROLLERS = 113;
inline constexpr uint32_t ID_CONTROLLERS_CONTROLLER = 2150;
inline constexpr uint32_t ID_CONTROLLERS_CHANNEL = 2151;

// The Lyrics view's Font... button.
inline constexpr uint32_t ID_LYRICS_FONT = 258;

// The Meter dialog (115) and the Metronome dialog (116).
inline constexpr uint32_t DLG_METER = 115;
inline constexpr uint32_t DLG_METRONOME = 116;
inline constexpr uint32_t ID_METRONOME_CLICK_LENGTH = 2104;
inline constexpr uint32_t ID_METRONOME_ON_PLAY = 2105;
inline constexpr uint32_t ID_METRONOME_ON_RECORD = 2106;
inline constexpr uint32_t ID_METRONOME_FIRST_CHANNEL = 2107;
inline constexpr uint32_t ID_METRONOME_OTHER_CHANNEL = 2108;
inline constexpr uint32_t ID_METRONOME_FIRST_KEY = 2109;
inline constexpr uint32_t ID_METRONOME_OTHER_KEY = 2110;
inline constexpr uint32_t ID_METRONOME_FIRST_VELOCITY = 2111;
inline constexpr uint32_t ID_METRONOME_OTHER_VELOCITY = 2112;
inline constexpr uint32_t ID_METRONOME_COUNT_IN = 2113;

// The Pitch Selection Settings dialog's choices.
inline constexpr uint32_t ID_PITCH_INTERVALS = 103;
inline constexpr uint32_t ID_PITCH_NOTES = 104;
inline constexpr uint32_t ID_PITCH_MIRROR = 105;

// The About box and its icon.
inline constexpr uint32_t DLG_ABOUT = 22000;
inline constexpr uint32_t ID_ABOUT_ICON = 1001;
