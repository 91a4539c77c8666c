# One page: cmake -DCMARK=… -DPAGE=….md -DFRAME=….html.in -DHTML=….html -P Render.cmake
execute_process(COMMAND ${CMARK} --extension table ${PAGE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([A-Za-z]+)\\.md\"" "href=\"\\1.html\"" body "${body}")
file(STRINGS ${PAGE} heading LIMIT_COUNT 1 ENCODING UTF-8)
string(REGEX REPLACE "^# " "" title "${heading}")
configure_file(${FRAME} ${HTML} @ONLY)
