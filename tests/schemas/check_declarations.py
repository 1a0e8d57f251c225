"""Checks schemas/penwick-macro.d.ts with penwick's context, the built-in macros, the macros of the
author's guide, and macros with one mistake each, which the compiler must find.

    check_declarations.py SAMPLE_FILES FOLDER

SAMPLE_FILES is the path of that program; FOLDER receives the files to compile."""

import collections
import json
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPILER = ROOT / "build/typescript/node_modules/typescript"
LOCK = ROOT / "tools/typescript/package-lock.json"
GUIDES = ("macros.md", "macros.ja.md")

OPTIONS = {
    "strict": True,
    "noEmit": True,
    "allowJs": True,
    "checkJs": True,
    "target": "es2023",
    "lib": ["es2023"],
    "types": [],
    "moduleDetection": "force",  # Each file is a separate scope, as macros are.
    "noFallthroughCasesInSwitch": True,
    "noImplicitReturns": True,
    "noPropertyAccessFromIndexSignature": True,
    "exactOptionalPropertyTypes": True,
}

# Mistakes: (the body of a macro, the part of the compiler's message that identifies the mistake)
MISTAKES = {
    "misspelt_field": ("context.document.txt; return {};", "'txt' does not exist"),
    "misspelt_part": ("context.documents.text; return {};", "'documents' does not exist"),
    "text_as_number": ("const n: number = context.document.text; return {};", "'number'"),
    "count_as_text": ("const s: string = context.document.lineCount; return {};", "'string'"),
    "context_changed": ("context.document.text = ''; return {};", "read-only"),
    "line_end_looked_for": ("if (context.document.newline === 'CRLF') {} return {};", "no overlap"),
    "input_as_number": ("const n: number = userInput; return {};", "'number'"),
    "log_of_two": ("console.log('a', 'b'); return {};", "0-1 arguments"),
    "error_of_console": ("console.error('a'); return {};", "'error' does not exist"),
    "web_page": ("window.alert('a'); return {};", "'window'"),
    "file_module": ("require('fs'); return {};", "'require'"),
    "timer": ("setTimeout(() => {}, 0); return {};", "'setTimeout'"),
    "nothing_returned": ("context.document.text;", "must return a value"),
    "null_returned": ("return null;", "'null'"),
    "text_returned": ("return 'done';", "no properties in common"),
    "list_returned": ("return [{ type: 'replaceAll', text: '' }];", "no properties in common"),
    "misspelt_list": ("return { textEdit: [] };", "'textEdit' does not exist"),
    "edit_alone": ("return { textEdits: { type: 'replaceAll', text: '' } };", "MacroTextEdit[]"),
    "unknown_edit": ("return { textEdits: [{ type: 'replace', text: '' }] };", '"replace"'),
    "edit_without_text": ("return { textEdits: [{ type: 'replaceAll' }] };", "'text'"),
    "edit_without_type": ("return { textEdits: [{ text: '' }] };", "'type'"),
    "text_of_edit": ("return { textEdits: [{ type: 'insertAtCursor', text: 1 }] };", "'number'"),
    "lines_as_text": (
        "return { textEdits: [{ type: 'replaceLines', startLine: 0, endLine: 1, lines: 'a' }] };",
        "string[]",
    ),
    "lines_without_end": (
        "return { textEdits: [{ type: 'replaceLines', startLine: 0, lines: [] }] };",
        "endLine",
    ),
    "text_of_lines": (
        "return { textEdits: [{ type: 'replaceLines', startLine: 0, endLine: 1, text: '' }] };",
        "'text' does not exist",
    ),
    "cursor_as_number": ("return { cursor: 3 };", "MacroCursor"),
    "cursor_without_column": ("return { cursor: { line: 3 } };", "'column'"),
    "selection_without_end": ("return { selection: { startOffset: 3 } };", "endOffset"),
    "notification_alone": ("return { notifications: { message: '' } };", "MacroNotification[]"),
    "notification_as_text": ("return { notifications: ['done'] };", "'string'"),
    "notification_without_message": ("return { notifications: [{ type: 'info' }] };", "message"),
    "kind_of_notification": ("return { notifications: [{ type: 'ok', message: '' }] };", '"ok"'),
}

# The only accepted message for correct macros. A variable first holds the result of match() and
# later that of map(); the compiler infers from the former an array that is never empty. No option
# suppresses this.
NO_MISTAKE = {
    "built_in_extractUrls.js": "Type 'string[]' is not assignable to type 'RegExpMatchArray | []'",
}

_EXAMPLE = re.compile(r"^<!-- run: (.*?) -->\n+```js\n(.*?)^```$", re.S | re.M)
_MESSAGE = re.compile(r"^([\w.]+)\(\d+,\d+\): (error .*)$")


def compiler_command():
    wanted = json.loads(LOCK.read_text())["packages"]["node_modules/typescript"]["version"]
    try:
        installed = json.loads((COMPILER / "package.json").read_text())["version"]
    except FileNotFoundError:
        installed = "none"
    if installed != wanted:
        sys.exit(
            f"The TypeScript compiler {wanted} is needed, and {installed} is installed: run"
            " tools/typescript/install (./test does), which takes it from the npm registry."
        )
    return [shutil.which("node") or "node", COMPILER / "bin/tsc"]


def as_typescript(body):
    return f"function macro(): MacroResult {{\n{body}\n}}\n"


def as_javascript(body):
    """The body as an author writes it for an editor that checks types."""
    return f"/** @returns {{MacroResult}} */\nfunction macro() {{\n{body}\n}}\n"


def guide_examples(guide):
    text = (ROOT / "docs" / guide).read_text(encoding="utf-8")
    for settings, code in _EXAMPLE.findall(text):
        settings = json.loads(settings)
        yield settings["name"], code, settings.get("compiles", True)


def guide_options(guide):
    """The compiler options that the guide recommends, in its only block of JSON."""
    text = (ROOT / "docs" / guide).read_text(encoding="utf-8")
    (block,) = re.findall(r"^```json\n(.*?)^```$", text, re.S | re.M)
    return json.loads(block)["compilerOptions"]


def sources(context_json):
    """{file name: (content, the part of the expected message; None for correct code)}"""
    files = {"context.ts": (f"const real: MacroContext = {context_json};\n", None)}
    for script in sorted((ROOT / "macro/library/scripts").glob("*.js")):
        name = f"built_in_{script.stem}.js"
        files[name] = (as_javascript(script.read_text("utf-8")), NO_MISTAKE.get(name))
    for name, (body, message) in MISTAKES.items():
        files[f"mistake_{name}.ts"] = (as_typescript(body), message)
    for name, lacking in lacking_contexts(json.loads(context_json)):
        files[f"lacking_{name}.ts"] = (f"const real: MacroContext = {lacking};\n", "")
    for guide in GUIDES:
        prefix = "guide_" + guide.replace(".", "_")
        for name, code, compiles in guide_examples(guide):
            name = re.sub(r"\W", "_", name)
            files[f"{prefix}_{name}.js"] = (as_javascript(code), None if compiles else "")
    return files


def lacking_contexts(context):
    """Contexts that penwick never makes: each has one field replaced by another."""
    for part, value in context.items():
        if not isinstance(value, dict):
            continue
        for field in value:
            renamed = {key + "_" * (key == field): each for key, each in value.items()}
            yield f"{part}_{field}", json.dumps({**context, part: renamed})


def compile_all(command, folder):
    config = {"compilerOptions": OPTIONS, "include": ["*"]}
    (folder / "tsconfig.json").write_text(json.dumps(config))
    run = subprocess.run(
        [*command, "--pretty", "false"],
        cwd=folder,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        check=False,
    )
    if run.returncode not in (0, 1, 2):
        sys.exit(f"The compiler failed:\n{run.stdout}")
    messages = collections.defaultdict(str)
    name = ""  # Indented lines continue a message; a line without a file belongs to all.
    for line in run.stdout.splitlines():
        if match := _MESSAGE.match(line):
            name, line = match.groups()
        elif not line.startswith(" "):
            name = ""
        messages[name] += line + "\n"
    return messages


def main(program, folder):
    command = compiler_command()
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "samples").mkdir(parents=True)
    subprocess.run([program, "write", folder / "samples"], check=True)
    context_json = (folder / "samples/context.json").read_text(encoding="utf-8")
    shutil.rmtree(folder / "samples")

    files = sources(context_json)
    for name, (content, _) in files.items():
        (folder / name).write_text(content, encoding="utf-8")
    shutil.copy(ROOT / "schemas/penwick-macro.d.ts", folder)
    messages = compile_all(command, folder)

    failures = []
    for name, (_, wanted) in files.items():
        said = messages.pop(name, "")
        if wanted is None and said:
            failures.append(f"{name}: {said}")
        elif wanted is not None and (said.count("error TS") != 1 or wanted not in said):
            failures.append(f"{name}: not just wrong by {wanted!r}, but: {said or 'fine'}")
    failures += [f"{name}: {said}" for name, said in messages.items()]
    for guide in GUIDES:
        if any(OPTIONS.get(name) != value for name, value in guide_options(guide).items()):
            failures.append(f"{guide}: other options than those that its macros are compiled with")
    right = [name for name, (_, wanted) in files.items() if wanted is None]
    for prefix, least in (("built_in_", 6), ("context", 1), ("guide_", 24)):
        if sum(name.startswith(prefix) for name in right) < least:
            failures.append(f"fewer than {least} files {prefix}*")
    print(f"{len(right)} files compile, {len(files) - len(right)} do not")
    for failure in failures:
        print(failure.strip())
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2])))
