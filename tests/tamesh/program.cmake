# Runs tamesh as a user does, and looks at its exit code and at what it prints where. TAMESH is the
# program, behind what starts it where it is one for another system.

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
file(WRITE ${FOLDER}/good.off "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")
file(WRITE ${FOLDER}/bad.off "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n")
file(WRITE ${FOLDER}/mesh.ply "ply\n")
file(WRITE ${FOLDER}/old.tadoc "old")
file(MAKE_DIRECTORY ${FOLDER}/folder.off)

# Not the user's own settings. (On Windows these are those of the test environment.)
set(ENV{TABASE_REGISTRY_FOLDER} ${FOLDER}_registry)
file(REMOVE_RECURSE ${FOLDER}_registry)

# expect(CODE OUT_PATTERN ERROR_PATTERN arguments...): a pattern that is empty demands silence.
function(expect code out_pattern error_pattern)
  execute_process(COMMAND ${TAMESH} ${ARGN} WORKING_DIRECTORY ${FOLDER}
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE error)
  if(NOT result STREQUAL code)
    message(SEND_ERROR "tamesh ${ARGN}: exit code ${result}, not ${code}\n${out}${error}")
  endif()
  foreach(stream out error)
    set(pattern "${${stream}_pattern}")
    if((pattern STREQUAL "" AND NOT ${stream} STREQUAL "") OR NOT ${stream} MATCHES "${pattern}")
      message(SEND_ERROR "tamesh ${ARGN}: ${stream} is not '${pattern}' but:\n${${stream}}")
    endif()
  endforeach()
endfunction()

expect(0 "good.off \\(OFF\\)\n  vertices +3\n  faces +1\n" "" info good.off)
expect(1 "good.off \\(OFF\\)\n.*good.off \\(OFF\\)\n" "^bad.off:6: the face names vertex 7[^\n]*\n$"
  info good.off bad.off good.off)
expect(1 "" "^missing.off: cannot open: [^\n]+\n$" info missing.off)
expect(1 "" "^missing.tadoc: cannot open: [^\n]+\n$" show missing.tadoc)
expect(1 "" "^folder.off: is a folder, not a file\n$" info folder.off)
expect(1 "" "^mesh.ply: unknown format[^\n]+\n$" info mesh.ply)
execute_process(COMMAND truncate -s 80M endless.off WORKING_DIRECTORY ${FOLDER})
expect(1 "" "endless.off:1: the line is longer than 64 MiB[^\n]*\n$" info endless.off)
file(REMOVE ${FOLDER}/endless.off)

expect(1 "" "^bad.off:6: " pack bad.off -o old.tadoc)
expect(1 "" "^nowhere/a.off: cannot create a temporary file beside it: " make torus 8 -o nowhere/a.off)
expect(0 "" "" pack good.off -o good.tadoc)
expect(0 "^good.tadoc \\(document\\)\n  vertices +3\n.*-- Source file \\(TaDataNodeString\\) = good.off\n"
  "" show good.tadoc)
expect(1 "" "^good.off: TuExceptionWrongFileVersion at apps/tamesh/document\\([0-9]+\\): "
  show good.off)

expect(0 "^small.tadoc \\(packed\\)\n  raw +100 bytes, 100 %\n.*largest error +none" ""
  pack good.off -o small.tadoc --lossless)
expect(0 "" "" unpack small.tadoc -o back.off)
expect(0 "quantized, 3 bits .*largest error " "" pack good.off -o small.tadoc --bits 3)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files --ignore-eol good.off back.off
  WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
expect(1 "" "^nothing.tadoc: cannot open: " unpack nothing.tadoc -o nothing.off)
file(REMOVE ${FOLDER}/small.tadoc ${FOLDER}/back.off)

# A document is checked, and what is intact of a damaged one is saved. (The file holds zero bytes,
# which CMake's own commands do not take.)
function(damage where)
  execute_process(WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY COMMAND python3 -c "
import sys
bytes = bytearray(open('good.tadoc', 'rb').read())
bytes[int(sys.argv[1])] ^= 64
open('damaged.tadoc', 'wb').write(bytes)" ${where})
endfunction()
set(sound "\n  head +[0-9]+ bytes, sound\n  Mesh +[0-9]+ bytes, sound\n  Geometry +[0-9]+ bytes, sound\n")
expect(0 "^good.tadoc \\(document by tamesh [0-9.]+\\)${sound}  end +[0-9]+ bytes, sound\n  verdict: sound\n$"
  "" check good.tadoc)
damage(300)
expect(1 "damaged.tadoc .*\n  Mesh +[0-9]+ bytes, its checksum is wrong\n.*verdict: damaged: Mesh\n.*verdict: sound\n$"
  "^damaged.tadoc: the document is damaged: Mesh\n$" check damaged.tadoc good.tadoc)
expect(1 "^saved.tadoc \\(salvaged from damaged.tadoc\\)\n  Mesh +[0-9]+ bytes, lost: its checksum is wrong\n  Geometry +[0-9]+ bytes, kept\n$"
  "^damaged.tadoc: lost: Mesh\n$" salvage damaged.tadoc -o saved.tadoc)
expect(0 "verdict: sound\n$" "" check saved.tadoc)
expect(0 "" "" unpack saved.tadoc -o saved.off)
damage(1)
expect(1 "${sound}.*damaged: its marker or its version is damaged\n$" "^damaged.tadoc: the document is damaged: its marker"
  check damaged.tadoc)
expect(0 "kept\n" "" salvage damaged.tadoc -o saved.tadoc)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files good.tadoc saved.tadoc
  WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
expect(2 "" "^./saved.tadoc: is the document itself; " salvage saved.tadoc -o ./saved.tadoc)
expect(1 "" "^old.tadoc: this is no document, and holds no chunk of one\n$" salvage old.tadoc -o saved.tadoc)
file(REMOVE ${FOLDER}/damaged.tadoc ${FOLDER}/saved.tadoc ${FOLDER}/saved.off)

# A page for browsers.
expect(0 "" "" report good.tadoc -o report.html)
file(READ ${FOLDER}/report.html page)
if(NOT page MATCHES "^<!DOCTYPE html>.*good.tadoc.*data:image/png;base64,iVBOR.*Source file.*</html>\n$")
  message(SEND_ERROR "report.html is no report:\n${page}")
endif()
expect(1 "" "^old.tadoc: TuException[^\n]+\n$" report old.tadoc -o report.html)
file(REMOVE ${FOLDER}/report.html)
expect(1 "" "^nowhere/a.html: cannot create a temporary file beside it: "
  report good.tadoc -o nowhere/a.html)

foreach(shape terrain torus sphere)
  expect(0 "" "" make ${shape} 8 -o ${shape}.off)
  expect(0 "\n  components +1\n" "" info ${shape}.off)
endforeach()

foreach(coloring height curvature component)
  expect(0 "" "" picture torus.off --by ${coloring} -o ${coloring}.png --view -1,-2,0.5 --up y
    --size 200x150)
  file(READ ${FOLDER}/${coloring}.png start LIMIT 24 HEX)
  string(TOUPPER ${start} start)
  if(NOT start STREQUAL "89504E470D0A1A0A0000000D49484452000000C800000096")
    message(SEND_ERROR "${coloring}.png, of 200 x 150, begins with ${start}")
  endif()
  file(REMOVE ${FOLDER}/${coloring}.png)
endforeach()
expect(0 "^torus.off \\(path\\)\n  length +[0-9.]+\n  vertices +[0-9]+\n  path +0 [0-9 ]*60\n$" ""
  path torus.off --from 0 --to 60 -o path.obj --dot path.dot --picture path.png --size 200x150)
foreach(file path.obj path.dot path.png)
  file(REMOVE_RECURSE ${FOLDER}/${file})
endforeach()
expect(1 "" "^torus.off: has no vertex 64; its vertices are 0 to 63\n$"
  path torus.off --from 0,0,0 --to 64)
file(WRITE ${FOLDER}/empty.off "OFF\n0 0 0\n")
expect(1 "" "^empty.off: has no vertices that could be shown\n$"
  picture empty.off --by height -o empty.png)
expect(1 "" "^nowhere/a.png: cannot create a temporary file beside it: "
  picture good.off --by height -o nowhere/a.png)
file(REMOVE ${FOLDER}/empty.off)

# Settings hold for this run and the later ones.
expect(0 "digits +0 .*tree-depth +40 " "" --set digits= --set tree-depth= help-settings)
expect(0 "upper bound +1 1 0\\.4\n" "" --set digits=1 --set tree-depth=1 info torus.off)
expect(0 "  Root \\(TaNode\\)\n   .-- Mesh \\(TaNode\\)\n   .-- Geometry \\(TaNode\\)\n$" ""
  show good.tadoc)
expect(2 "" "^tamesh: --set: the setting digits is 0 to 17, not '18'\n" --set digits=18 info good.off)
expect(2 "" "^tamesh: --set: there is no setting 'size'" --set size=1 info good.off)
set(key "Software\\TaBase\\tamesh\\Settings")
expect(0 "^1\n$" "" options get ${key} DIGITS)
expect(0 "" "" options set ${key} tree-depth 99) # beyond its limits, so not taken
expect(0 "digits +1 .*tree-depth +40 " "" help-settings)
expect(0 "" "" options export ${key} -o saved.txt)
expect(0 "" "" options remove ${key})
expect(0 "digits +0 " "" help-settings)
expect(1 "" "^user: [^\n]*: there is no value 'digits'\n$" options get ${key} digits)
expect(0 "" "" options import saved.txt)
expect(0 "user: .*\n  digits = 1\n  tree-depth = 99\n$" "" options list ${key} --category user)
expect(1 "" "^user: [^\n]*: there is no such key\n$" options list ${key}\\more)
expect(1 "" "^good.off:1: this is not an export of options\n$" options import good.off)
expect(0 "" "" options remove ${key})
file(REMOVE ${FOLDER}/saved.txt)

# An interrupt leaves nothing behind.
execute_process(WORKING_DIRECTORY ${FOLDER} RESULT_VARIABLE result ERROR_VARIABLE error
  COMMAND python3 -c "
import glob, signal, subprocess, sys, time
signal.signal(signal.SIGINT, signal.SIG_DFL)  # a test in the background is started without
program = subprocess.Popen(sys.argv[1:], stderr=subprocess.PIPE)
end = time.monotonic() + 100
while not glob.glob('large.off.*') and program.poll() is None and time.monotonic() < end:
    time.sleep(0.002)
program.send_signal(signal.SIGINT)
error = program.communicate()[1].decode().replace('\\r', '')
if program.returncode != 130 or not error.endswith('large.off: interrupted\\n'):
    sys.exit('exit code %d\\n%s' % (program.returncode, error))
if glob.glob('large.off*'):
    sys.exit('something is left of large.off')"
  ${TAMESH} make sphere 700 -o large.off)
if(NOT result EQUAL 0)
  message(SEND_ERROR "interrupted: ${error}")
endif()

set(usage "\nUsage: tamesh")
expect(2 "" "${usage}")
expect(2 "" "^tamesh: there is no subcommand or option fly\n.*${usage}" fly)
expect(2 "" "${usage} info" info)
expect(2 "" "${usage} pack" pack good.off)
expect(2 "" "${usage} pack" pack good.off -o good.off)
expect(2 "" "${usage} pack" pack good.off -o good.tadoc --bits 25)
expect(2 "" "${usage} pack" pack good.off -o good.tadoc --bits 8 --lossless)
expect(2 "" "${usage} unpack" unpack good.tadoc -o good.tadoc)
expect(2 "" "${usage} check" check)
expect(2 "" "${usage} salvage" salvage good.tadoc -o good.off)
expect(2 "" "${usage} report" report good.tadoc -o good.tadoc)
expect(2 "" "^tamesh: --from: [^\n]*: 1,2\n.*${usage} path" path good.off --from 1,2 --to 3)
expect(2 "" "${usage} path" path good.off --from 1)
expect(2 "" "${usage} picture" picture good.off --by height)
expect(2 "" "${usage} picture" picture good.off --by height -o good.off)
expect(2 "" "${usage} picture" picture good.off --by weight -o good.png)
foreach(view 0,0,0 1,2 1,2,3,4 1,2,x inf,0,0 1,2,)
  expect(2 "" "^tamesh: --view: [^\n]*: ${view}\n.*${usage} picture"
    picture good.off --by height -o good.png --view ${view})
endforeach()
foreach(size 199x150 200x149 4001x300 300x4001 300 300x 99999999999x300 300x300x3)
  expect(2 "" "^tamesh: --size: [^\n]*: ${size}\n.*${usage} picture"
    picture good.off --by height -o good.png --size ${size})
endforeach()
expect(2 "" "${usage} make" make cube 5 -o cube.off)
expect(2 "" "${usage} make" make torus 2 -o torus2.off)
expect(0 "${usage}|Usage: tamesh" "" --help)
expect(0 "^tamesh [0-9.]+\n$" "" --version)

# A name that no code page holds as a whole.
file(COPY_FILE ${FOLDER}/good.off ${FOLDER}/ä€Ж网.off)
expect(0 "^ä€Ж网.off \\(OFF\\)\n" "" info ä€Ж网.off)
expect(1 "" "^Ж网.off: cannot open: [^\n]+\n$" info Ж网.off)
file(REMOVE ${FOLDER}/ä€Ж网.off)

# What does not fit is a failure: in a pipe that nobody reads, on a full disk.
function(expect_lost error_pattern command)
  execute_process(COMMAND sh -c "${command}" tamesh ${TAMESH} WORKING_DIRECTORY ${FOLDER}
    RESULT_VARIABLE result ERROR_VARIABLE error)
  if(NOT result EQUAL 1 OR NOT error MATCHES "^${error_pattern}\n$")
    message(SEND_ERROR "${command}: exit code ${result}\n${error}")
  endif()
endfunction()

set(output "standard output: cannot be written")
expect_lost("${output}" "mkfifo pipe && exec 3<>pipe 4>pipe 3>&- && \"$@\" info good.off >&4")
file(REMOVE ${FOLDER}/pipe)
if(EXISTS /dev/full)
  expect_lost("${output}" "\"$@\" --version >/dev/full")
  expect_lost("${output}" "\"$@\" make --help >/dev/full")
endif()
if(WINDOWS)
  message("Left out on Windows, which has no such thing: a limit of file sizes, a pipe of the parent "
    "that does not wait")
else()
# (A build that counts executed lines cannot write those, either, and is not to say so.)
expect_lost("old.tadoc: cannot write: [^\n]+"
  "ulimit -f 1 && GCOV_ERROR_FILE=/dev/null \"$@\" pack sphere.off -o old.tadoc")

# A pipe that does not wait is full for a moment, not for good.
string(REPEAT "good.off;" 1000 many)
execute_process(WORKING_DIRECTORY ${FOLDER} RESULT_VARIABLE result
  COMMAND python3 -c "
import os, subprocess, sys, time
reader, writer = os.pipe()
os.set_blocking(writer, False)
program = subprocess.Popen(sys.argv[1:], stdout=writer)
os.close(writer)
time.sleep(0.2)
with open(reader) as output:
    sys.exit(output.read().count('good.off') != 1000 or program.wait())"
  ${TAMESH} info ${many})
if(NOT result EQUAL 0)
  message(SEND_ERROR "words were lost in a pipe that does not wait")
endif()
endif() # WINDOWS

# What failed wrote nothing, and nothing is left of the attempts.
file(READ ${FOLDER}/old.tadoc old)
file(GLOB names RELATIVE ${FOLDER} ${FOLDER}/*)
list(SORT names)
if(NOT "${old};${names}" STREQUAL "old;bad.off;folder.off;good.off;good.tadoc;mesh.ply;old.tadoc;sphere.off;terrain.off;torus.off")
  message(SEND_ERROR "in the folder are now: ${names}; old.tadoc holds ${old}")
endif()
