" Settings for programs of Korvane BASIC.
if exists("b:did_ftplugin")
  finish
endif
let b:did_ftplugin = 1

" Characters beyond ASCII are those of code page 437; a line holds 244 characters behind its number.
setlocal textwidth=0
setlocal expandtab
setlocal nowrap
setlocal iskeyword=48-57,65-90,97-122,$
let b:undo_ftplugin = "setlocal textwidth< expandtab< wrap< iskeyword<"
