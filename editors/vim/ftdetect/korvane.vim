" Programs of Korvane BASIC: text files with line numbers.
autocmd BufNewFile,BufRead *.bas,*.BAS set filetype=korvane
