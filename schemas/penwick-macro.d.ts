// What a penwick macro can use and what it returns, for editors and for the TypeScript compiler.
//
// A macro is the body of a function. To have it checked, write it as a whole function, and take over
// only what stands between the braces:
//
//     // @ts-check
//     /// <reference path="penwick-macro.d.ts" />
//
//     /** @returns {MacroResult} */
//     function macro() {
//         return { textEdits: [{ type: "insertAtCursor", text: context.dateTime.nowIso }] };
//     }
//
// Let the compiler know the language only ("lib": ["es2023"], "types": []): there is no web page and
// no module system around a macro.
//
// Positions: an offset counts UTF-16 code units from the start of the text, as the length of a string
// does; 😀 counts 2. A line number counts line feeds ("\n") before it. A column counts characters as
// people see them from the start of the line; 😀 counts 1, and so does 👨‍👩‍👧. All of them start at 0.

/** The window and the moment the macro runs in. A copy: to change the text, return edits. */
declare const context: MacroContext;

/**
 * What the user was asked for before the run. Only the built-in macros that ask for something get it.
 * For all others there is no such variable, and using it throws a `ReferenceError`; a macro for both
 * cases looks at `typeof userInput` first.
 */
declare const userInput: string;

/** Nothing but `log`. */
declare const console: MacroConsole;

interface MacroConsole {
    /**
     * Writes one line to penwick's standard error: "[MacroLog] ", and `message` as a string.
     * Takes one value only.
     */
    log(message?: unknown): void;
}

interface MacroContext {
    /** Version of what is described here. */
    readonly schemaVersion: "1.0";
    readonly app: MacroContextApp;
    readonly capabilities: MacroContextCapabilities;
    readonly document: MacroContextDocument;
    readonly file: MacroContextFile;
    readonly selection: MacroContextSelection;
    readonly cursor: MacroContextCursor;
    readonly editor: MacroContextEditor;
    readonly dateTime: MacroContextDateTime;
    readonly macro: MacroContextMacro;
}

/** The program that runs the macro. */
interface MacroContextApp {
    /** "penwick". */
    readonly name: string;
    /** Such as "1.0.0". */
    readonly version: string;
}

/** What a macro may ask for. */
interface MacroContextCapabilities {
    /** Whether `textEdits` are carried out. True. */
    readonly textEdit: boolean;
    /** Whether `selection` is carried out. True. */
    readonly selection: boolean;
    /** Whether `cursor` is carried out. True. */
    readonly cursor: boolean;
    /** Whether `notifications` are shown. True. */
    readonly notifications: boolean;
    /** Whether settings can be changed. False. */
    readonly settingsPatch: boolean;
    /** Whether files can be read or written. False. */
    readonly fileAccess: boolean;
    /** Whether the clipboard can be read or written. False. */
    readonly clipboard: boolean;
    /** Whether the network can be used. False. */
    readonly network: boolean;
}

/** The text of the window. */
interface MacroContextDocument {
    /** The whole text with all its characters; a CR LF in the file is "\r\n" here. */
    readonly text: string;
    /** Line feeds and one: at least 1, and 2 for "a\n". */
    readonly lineCount: number;
    /** Characters as people see them: 😀 counts 1, and so does a CR LF. */
    readonly characterCount: number;
    /** Always "LF", whatever line ends the file has: look at `text` for those. */
    readonly newline: "LF";
    /** Always "UTF-8". */
    readonly encoding: "UTF-8";
    /** Whether there are changes that are not saved. */
    readonly isModified: boolean;
}

/** The file behind the text. */
interface MacroContextFile {
    /** Such as "notes.txt", even if the first save will create that file; empty for an untitled text. */
    readonly name: string;
    /** Always empty: a macro does not learn where the file is. */
    readonly path: string;
    /** Always empty, like `path`. */
    readonly directoryPath: string;
    /** Such as "txt", without the dot; empty when there is none. */
    readonly extension: string;
    /** Whether the text has a file name. The file itself may not exist yet, or not any more. */
    readonly existsOnDisk: boolean;
}

/** What is selected. When nothing is, both ends are where the caret is. */
interface MacroContextSelection {
    /** Whether at least one code unit is selected. */
    readonly hasSelection: boolean;
    /** The selected text; empty when nothing is selected. */
    readonly text: string;
    /** Start, in UTF-16 code units from 0: `context.document.text.slice(startOffset, endOffset)` is `text`. */
    readonly startOffset: number;
    /** End, in UTF-16 code units from 0; the first one that is not selected. */
    readonly endOffset: number;
    /** Line of the start, from 0. */
    readonly startLine: number;
    /** Column of the start, in characters as people see them, from 0. */
    readonly startColumn: number;
    /**
     * Line of the end, from 0. `replaceLines` and `Array.prototype.slice` stop before their end: to take
     * the line that the selection ends in, add 1, unless `endColumn` is 0 and nothing of it is selected.
     */
    readonly endLine: number;
    /** Column of the end, in characters as people see them, from 0. */
    readonly endColumn: number;
}

/** The caret; with a selection, the end of that. */
interface MacroContextCursor {
    /** In UTF-16 code units from 0. */
    readonly offset: number;
    /** From 0. */
    readonly line: number;
    /** In characters as people see them, from 0. */
    readonly column: number;
}

/** The editor that shows the text. */
interface MacroContextEditor {
    /** Always "tab_main". */
    readonly tabId: string;
    /** The file's name, or what penwick calls an untitled text. */
    readonly tabTitle: string;
}

/** When the macro was started. */
interface MacroContextDateTime {
    /** Local time with its offset, such as "2025-03-01T18:15:00+09:00"; "Z" stands for no offset. */
    readonly nowIso: string;
    /** Name of the time zone, such as "Asia/Tokyo". */
    readonly timezone: string;
}

/** The macro itself. */
interface MacroContextMacro {
    readonly id: string;
    /** As the macro menu shows it. */
    readonly name: string;
}

/** What a macro returns. An empty object is a result, too: it changes nothing. */
interface MacroResult {
    /** Version of this description that the macro was written for; "1.0" when left out. */
    schemaVersion?: string;
    /**
     * Changes of the text, made one after the other as one undo step. Each finds the text and the
     * selection as those before it left them. One that is wrong stops the macro before anything is
     * changed, unless only the text shows that it is wrong: then those before it stay.
     */
    textEdits?: MacroTextEdit[];
    /** Where to put the caret after the edits. Without edits nothing is moved. */
    cursor?: MacroCursor;
    /** What to select after the edits and after `cursor`; null selects nothing. Without edits nothing is moved. */
    selection?: MacroSelection | null;
    /** Messages for the status bar, which shows the last one. Without any, penwick says that it is done. */
    notifications?: MacroNotification[];
}

type MacroTextEdit =
    | MacroReplaceAll
    | MacroReplaceSelection
    | MacroInsertAtCursor
    | MacroReplaceLines;

/** Puts `text` in the place of the whole text. */
interface MacroReplaceAll {
    type: "replaceAll";
    text: string;
}

/** Puts `text` in the place of what is selected. Fails when nothing is: see `selection.hasSelection`. */
interface MacroReplaceSelection {
    type: "replaceSelection";
    text: string;
}

/** Puts `text` behind the caret; with a selection, behind that, which stays. */
interface MacroInsertAtCursor {
    type: "insertAtCursor";
    text: string;
}

/** Puts `lines` in the place of the lines from `startLine` up to but not including `endLine`. */
interface MacroReplaceLines {
    type: "replaceLines";
    /** First line to replace, from 0. */
    startLine: number;
    /** The line behind the last one to replace: greater than `startLine`, at most the number of lines. */
    endLine: number;
    /** The new lines, without line feeds; none to remove the old ones. */
    lines: string[];
}

/** A place: by offset, or else by line and column. What lies behind the end counts as the end. */
type MacroCursor = MacroCursorOffset | MacroCursorLine;

interface MacroCursorOffset {
    /** In UTF-16 code units from 0. */
    offset: number;
}

/** Exact only where each character before it is one code unit; with 😀 in the text, use an offset. */
interface MacroCursorLine {
    /** From 0. */
    line: number;
    /** From 0. */
    column: number;
}

/** A range to select. What lies behind the end counts as the end. */
interface MacroSelection {
    /** In UTF-16 code units from 0. */
    startOffset: number;
    /** In UTF-16 code units from 0; the first one that is not selected. Not below `startOffset`. */
    endOffset: number;
}

interface MacroNotification {
    /** "info" when left out. All are shown alike. */
    type?: "success" | "info" | "warning" | "error";
    message: string;
}
