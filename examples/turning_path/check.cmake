# Runs turning_path: each picture must be of the kind that its name asks for, and each mistake give one line on
# standard error and the exit code of its kind. PROGRAM is the command, FOLDER where the pictures go.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/folder.svg)

# `output` is a regular expression for the exit code and all that is printed.
function(expect_output output)
    execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE error)
    if(NOT "${code}${out}${error}" MATCHES "^${output}$")
        message(SEND_ERROR "${ARGN}: exit code ${code}, '${out}', '${error}'")
    endif()
endfunction()

function(expect_mistake code message)
    expect_output("${code}turning_path: [^\n]*${message}[^\n]*\n" ${ARGN})
endfunction()

# `text` stands in a picture of the wanted kind.
function(expect_picture name text)
    expect_output(0 ${ARGN} --out ${FOLDER}/${name})
    file(STRINGS ${FOLDER}/${name} found REGEX ${text})
    file(SIZE ${FOLDER}/${name} size)
    if(found STREQUAL "" OR size LESS 20000)
        message(SEND_ERROR "${name} is of another kind, or next to nothing is in it")
    endif()
endfunction()

expect_picture(path.PNG IHDR --dark --segments 10000)
expect_picture(sheet.svg "<title>Turning curves by heading</title>" --sheet --run-in 0)
expect_picture(one-place.svg ">1000020</text>" --start 1e6,1e6 --target 1e6,1e6 --handle 0)
expect_picture(huge.svg "<title>Turning path</title>" --start 1e6,-1e6 --target=-1e6,1e6 --bulge 1e6 --handle 1e6)
expect_picture(backwards.svg "<title>Turning path</title>" --run-in -3)
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

# A disk that is full before the last bytes: an older picture stays.
if(CMAKE_HOST_UNIX)
    set(ENV{LC_ALL} C)
    file(WRITE ${FOLDER}/full.svg "an older picture")
    file(SIZE ${FOLDER}/sheet.svg size)
    math(EXPR last_block "(${size} - 1) / 512")
    set(PROGRAM sh -c "trap '' XFSZ && ulimit -f ${last_block} && exec \"$@\"" sh ${PROGRAM})
    expect_mistake(1 "cannot write .*full.svg: File too large" --out ${FOLDER}/full.svg --sheet --run-in 0)
    file(READ ${FOLDER}/full.svg kept)
    if(NOT kept STREQUAL "an older picture")
        message(SEND_ERROR "a picture that cannot be written takes the place of an older one")
    endif()
endif()
