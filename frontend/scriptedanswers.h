// Answers to the program's windows from a script, for the tests that run
// the real TrackConverter: when QUILLOTONE_TEST_SCRIPT names a file, each
// window that waits for the user takes the first line of the file meant
// for its kind, carries out its steps and removes it, so that a program
// started from that window (a re-convert) finds the lines left for it.
//
// A line: a kind ("options", "overwrite", "errors", "newprofile",
// "naming", "dspsettings", "crashreport"), a colon, then steps separated
// by ";":
//   encoder TEXT          choose that row of the encoder list
//   option NAME VALUE     set a value of the settings page (the options
//                         window's, or an effect's)
//   effect NAME           add that effect (its settings window opens)
//   field NAME VALUE      set a field of an effect page of the program's
//   text TEXT             an effect's settings as text
//   output TEXT           make TEXT the output location
//   outputcommand TEXT    choose the output list's command of that text
//   press ID              press the control with that id
//   base TEXT, naming TEXT            the naming editor's two fields
//   insert MENU LABEL     its menu entry (MENU: tags, properties,
//                         functions or examples)
// The open-file dialog takes a line "files: PATH; PATH" (none: cancelled).
// A window without a line of its own adds "unanswered: KIND" to the file
// and is closed. Without the variable nothing of this is active.
#pragma once

// Installs the answers when the environment asks for them.
void InstallScriptedAnswers();
