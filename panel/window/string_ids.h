// SPDX-License-Identifier: MIT
/* The numbers of the texts. Included by the resource compiler as well. */
#ifndef KORA4_PANEL_WINDOW_STRING_IDS_H
#define KORA4_PANEL_WINDOW_STRING_IDS_H

/* Names and labels. */
#define IDS_TITLE 100
#define IDS_ENABLE 101
#define IDS_PROFILE 102
#define IDS_NEW 103
#define IDS_RENAME 104
#define IDS_DELETE 105
#define IDS_REVERT 106
#define IDS_VOLUME_LEVELER 110 /* the technologies, by their numbers */
#define IDS_GRAPHIC_EQ 111
#define IDS_INTELLIGENT_EQ 112
#define IDS_DIALOG_ENHANCER 113
#define IDS_HEADPHONE_VIRTUALIZER 114
#define IDS_SPEAKER_VIRTUALIZER 115
#define IDS_BAND 120
#define IDS_GAIN 121
#define IDS_FLAT 122
#define IDS_IMPORT 123
#define IDS_EXPORT 124
#define IDS_LEVELS 125
#define IDS_UNDO_OWN 126
#define IDS_UNDO_FOREIGN 127
#define IDS_MORE 129
#define IDS_LEAVE_DEMO 130
#define IDS_TRY_AGAIN 131
#define IDS_DB 132
#define IDS_COMPARE_A 133
#define IDS_COMPARE_B 134

/* Profiles and curves, by their numbers. */
#define IDS_PRESET 140
#define IDS_DEMO 145
#define IDS_CUSTOM 148
#define IDS_OTHER_PROFILE 149
#define IDS_CURVE 150

/* The menu. */
#define IDS_MENU_TRAY 160
#define IDS_MENU_SYSTEM 161
#define IDS_MENU_LIGHT 162
#define IDS_MENU_DARK 163
#define IDS_MENU_OPEN 164
#define IDS_MENU_EXIT 165

/* Views: what is written in them, and what a screen reader says. */
#define IDS_CURVE_NAME 170
#define IDS_BAND_NAME 171
#define IDS_GAIN_VALUE 172
#define IDS_NO_BANDS 173
#define IDS_LEVELS_NAME 174
#define IDS_LEVELS_VALUE 175
#define IDS_LEVELS_SILENT 176
#define IDS_LEVELS_OFF 177
#define IDS_LEVELS_FAILED 178
#define IDS_OUTSIDE 179
#define IDS_CURVE_HELP 180
#define IDS_WAITING_MARK 181
#define IDS_NO_CURVE 182

/* Banners. */
#define IDS_BANNER_DEMO 190
#define IDS_BANNER_NOT_REGISTERED 191
#define IDS_BANNER_NO_STORE 192
#define IDS_BANNER_LIBRARY 193
#define IDS_BANNER_READ_ONLY 194
#define IDS_BANNER_CONNECTING 195

/* What was done, and what came of it. */
#define IDS_DID_SET 200
#define IDS_DID_UNDO 201
#define IDS_DID_COMPARE 202
#define IDS_DID_CREATE 203
#define IDS_DID_RENAME 204
#define IDS_DID_DELETE 205
#define IDS_DID_REVERT 206
#define IDS_DID_LEAVE_DEMO 207
#define IDS_DID_IMPORT 208
#define IDS_DID_EXPORT 209
#define IDS_DONE 220
#define IDS_NOT_DONE 221
#define IDS_READY 222
#define IDS_WAITING 223
#define IDS_FOREIGN 224
#define IDS_CODE_DEMO 225
#define IDS_CODE_NOT_IN_DEMO 226
#define IDS_CODE_NO_SUCH 227
#define IDS_CODE_NOT_PRESET 228
#define IDS_CODE_ABSENT 229
#define IDS_CODE_FAIL 230
#define IDS_CODE_INVALID 231
#define IDS_CODE_DENIED 232
#define IDS_CODE_NO_FILE 233
#define IDS_CODE_OTHER 234
#define IDS_FILE_LINE 235
#define IDS_UNDO_OVERTAKEN 236
#define IDS_UNDO_IMPOSSIBLE 237
#define IDS_COMPARE_NEW 238
#define IDS_NO_FREE_PROFILE 239
#define IDS_BAD_GAIN 240
#define IDS_VALUE_IS 241
#define IDS_CODE_NO_LIBRARY 242
#define IDS_CODE_OTHER_PLACE 246
#define IDS_UNDO_NOTHING 247
#define IDS_WAITING_WITH 248

/* Dialogs. */
#define IDS_ASK_NEW 250
#define IDS_ASK_RENAME 251
#define IDS_ASK_DELETE 252
#define IDS_OK 253
#define IDS_CANCEL 254
#define IDS_FILE_FILTER 255
#define IDS_NAME_PROPOSAL 256

#endif /* KORA4_PANEL_WINDOW_STRING_IDS_H */
