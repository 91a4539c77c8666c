# One page: cmake -DCMARK=… -DPAGE=….md -DLANGUAGE=… -DFOLDER=… -DFRAME=….html.in -DHTML=….html -P Render.cmake
# FOLDER: where the page lies below the help's folder, with its slash; empty in that folder itself.
execute_process(COMMAND ${CMARK} --extension table ${PAGE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([A-Za-z]+)\\.md\"" "href=\"\\1.html\"" body "${body}")
string(REGEX REPLACE "[^/]+/" "../" up "${FOLDER}")
get_filename_component(folder ${PAGE} DIRECTORY)
file(STRINGS ${folder}/index.md index LIMIT_COUNT 1 ENCODING UTF-8)
string(REGEX REPLACE "^# " "" help "${index}")
file(STRINGS ${PAGE} heading LIMIT_COUNT 1 ENCODING UTF-8)
string(REGEX REPLACE "^# " "" title "${heading}")
configure_file(${FRAME} ${HTML} @ONLY)
