# fish completion for penwick-macro.

function __penwick_macro_stored
    penwick-macro --list 2>/dev/null | while read --delimiter \t --local id name origin
        printf '%s\t%s\n' $name $id $id $name
    end
end

# $argv: the description in Japanese and in English, then options of complete.
function __penwick_macro_option
    set -l text $argv[2]
    set -l language $LC_ALL $LC_MESSAGES $LANG
    string match --quiet 'ja*' -- $language[1]; and set text $argv[1]
    complete --command penwick-macro --description $text $argv[3..]
end

__penwick_macro_option 保存されたマクロ 'stored macro' -s m -l macro -x -k -a '(__penwick_macro_stored)'
__penwick_macro_option スクリプトか、書き出したマクロ 'script or exported macro' -s f -l file -r -F
__penwick_macro_option マクロのコード 'code of a macro' -s e -l code -x
__penwick_macro_option 'userInput に入る文字列' 'text of userInput' -l input -x
__penwick_macro_option '選択範囲 (先頭:末尾)' 'selection (START:END)' -l selection -x
__penwick_macro_option 選択する行 'selected line' -l line -x
__penwick_macro_option カーソルの位置 'place of the caret' -l cursor -x
__penwick_macro_option ファイルに書き戻す 'write results back' -s i -l in-place
__penwick_macro_option 書き戻し、元のファイルも残す 'write back and keep the old text' -l backup
__penwick_macro_option 結果を書くファイル 'file for the result' -s o -l output -r -F
__penwick_macro_option 書かずに、変わるファイルを挙げる 'write nothing, list what would change' -l check
__penwick_macro_option 差分を出す 'write a unified diff' -l diff
__penwick_macro_option 変わるファイルの名前だけ 'names of changed files only' -s l -l names
__penwick_macro_option '名前だけ、NUL 区切り' 'names only, ended by NUL' -s 0 -l null
__penwick_macro_option 'JSON で出す' 'write JSON' -l json
__penwick_macro_option エラーだけ 'errors only' -s q -l quiet
__penwick_macro_option 詳しく 'say more' -s v -l verbose
__penwick_macro_option 色 colours -l color -x -a 'auto always never'
__penwick_macro_option ファイル名の一覧 'list of files' -l files-from -r -F
__penwick_macro_option 'NUL 区切りの一覧' 'list of files, ended by NUL' -l files0-from -r -F
__penwick_macro_option 標準入力のファイル名 'name of standard input' -l stdin-filename -r -F
__penwick_macro_option 'UTF-8 でないファイルは飛ばす' 'skip files that are not UTF-8' -l ignore-non-utf8
__penwick_macro_option 同時に動かす数 'files at once' -s j -l jobs -x
__penwick_macro_option '時間の上限 (秒)' 'limit in seconds' -l timeout -x
__penwick_macro_option 警告とエラーの通知を終了ステータスに 'warnings make status 1' -l strict
__penwick_macro_option マクロの一覧 'list the macros' -l list
__penwick_macro_option 使い方 'summary of the options' -s h -l help
__penwick_macro_option バージョン version -l version

functions --erase __penwick_macro_option
