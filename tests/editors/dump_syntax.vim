" Writes the names of the syntax items of every character of a file: one line for each line, one name for each character.
" vim -es -Nu NONE --cmd "set runtimepath^=EDITORS/vim" -S dump_syntax.vim FILE OUTPUT
filetype plugin on
syntax on
let s:output = argv(1)
execute "edit" fnameescape(argv(0))
let s:lines = []
for s:line in range(1, line("$"))
  let s:names = map(range(1, strlen(getline(s:line))), 'synIDattr(synID(s:line, v:val, 0), "name")')
  call add(s:lines, join(map(s:names, 'v:val == "" ? "-" : v:val'), " "))
endfor
call writefile([&filetype] + s:lines, s:output)
qall!
