# Runs turning_path: each picture must be of the kind that its name asks for, and each mistake give one line on
# standard error and the exit code of its kind. PROGRAM is the command, FOLDER where the pictures go.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/folder.svg)

# A picture: its name, the bytes that it begins with as a regular expression of hex digits, the arguments.
function(expect_picture name head)
    execute_process(COMMAND ${PROGRAM} ${ARGN} --out ${FOLDER}/${name}
        RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE error)
    file(READ ${FOLDER}/${name} bytes HEX)
    string(LENGTH "${bytes}" digits)
    if(NOT "${code}${out}${error}" STREQUAL "0" OR NOT bytes MATCHES "^${head}" OR digits LESS 10000)
        message(SEND_ERROR "${name}: exit code ${code}, '${out}${error}', or next to nothing in the picture")
    endif()
endfunction()

function(expect_mistake wanted_code message)
    execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE error)
    if(NOT code EQUAL wanted_code OR NOT error MATCHES "^turning_path: [^\n]*${message}[^\n]*\n$" OR NOT out STREQUAL "")
        message(SEND_ERROR "${ARGN}: exit code ${code}, '${error}'")
    endif()
endfunction()

set(png 89504e470d0a1a0a)
set(svg 3c3f786d6c) # <?xml
expect_picture(path.PNG ${png} --dark --segments 10000)
expect_picture(sheet.svg ${svg} --sheet --run-in 0)
expect_picture(one-place.svg ${svg} --start 1e6,1e6 --target 1e6,1e6 --handle 0)
expect_picture(huge.svg ${svg} --start 1e6,-1e6 --target=-1e6,1e6 --bulge 1e6 --handle 1e6)
expect_picture(backwards.svg ${svg} --run-in -3)

file(READ ${FOLDER}/sheet.svg sheet)
if(NOT sheet MATCHES "<title>Turning curves by heading</title>")
    message(SEND_ERROR "sheet.svg has no title of its own")
endif()
# Start and target are the circles of radius 6 and 9, each once more in the legend: both lie on the x axis.
file(READ ${FOLDER}/backwards.svg backwards)
string(REGEX MATCHALL "cy=\"[0-9.]+\" r=\"6\"" starts "${backwards}")
string(REGEX MATCHALL "cy=\"[0-9.]+\" r=\"9\"" targets "${backwards}")
string(REPLACE "r=\"9\"" "r=\"6\"" targets "${targets}")
if(NOT starts STREQUAL targets OR NOT starts MATCHES ";")
    message(SEND_ERROR "a curve that ends beyond its target is marked as if it ended there: ${starts}, ${targets}")
endif()

expect_mistake(2 "--out takes a file name" --out picture.jpg)
expect_mistake(2 "--bulge takes a number" --out a.png --bulge nan)
expect_mistake(2 "--start takes two numbers" --out a.png --start 1,2,3)
expect_mistake(2 "--segments takes a whole number" --out a.png --segments 0)
expect_mistake(2 "Unknown option" --out a.png --unknown)
expect_mistake(2 "belongs to no option" --out a.png stray)
expect_mistake(1 "cannot write .*missing/a.svg: [A-Z]" --out ${FOLDER}/missing/a.svg)
expect_mistake(1 "cannot write .*folder.svg: It is no regular file" --out ${FOLDER}/folder.svg)

# A pipe, which stays as a device does, and a disk that is full before the last bytes, where an older picture stays.
if(CMAKE_HOST_UNIX)
    execute_process(COMMAND mkfifo ${FOLDER}/pipe.svg)
    expect_mistake(1 "cannot write .*pipe.svg: It is no regular file" --out ${FOLDER}/pipe.svg)
    file(SIZE ${FOLDER}/backwards.svg size)
    math(EXPR last_block "(${size} - 1) / 512")
    file(WRITE ${FOLDER}/full.svg "an older picture")
    set(PROGRAM sh -c "trap '' XFSZ && ulimit -f ${last_block} && exec \"$@\"" sh ${PROGRAM})
    expect_mistake(1 "cannot write .*full.svg: [A-Z]" --out ${FOLDER}/full.svg --run-in -3)
    file(READ ${FOLDER}/full.svg kept)
    file(GLOB left ${FOLDER}/full.svg?*)
    if(NOT "${kept}${left}" STREQUAL "an older picture")
        message(SEND_ERROR "a picture that cannot be written takes the place of an older one or leaves ${left}")
    endif()
endif()
