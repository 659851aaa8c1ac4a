"""Runs `tamesh run` and `tamesh shell` as a user does, and interrupts them.

session_program.py FOLDER PROGRAM...: PROGRAM is tamesh, behind what starts it where it is one for
another system.
"""

import glob
import os
import re
import shutil
import signal
import subprocess
import sys
import threading

TIMEOUT = 100
signal.signal(signal.SIGINT, signal.SIG_DFL)  # a test in the background is started without
folder, program = sys.argv[1], sys.argv[2:]
shutil.rmtree(folder, ignore_errors=True)
os.makedirs(folder)
os.chdir(folder)
# Not the user's own settings. (On Windows these are those of the test environment.)
os.environ['TABASE_REGISTRY_FOLDER'] = os.path.abspath('registry')

faults = []


def text(data):
    """Without progress, which a slow build shows."""
    lines = data.decode().replace('\r\n', '\n')
    return re.sub(r'(?m)^[a-z]+ing [^\n]*: \d+ %\n', '', lines)


def check(is_right, what):
    if not is_right:
        faults.append(what)
        print(what)


def expect(code, out_pattern, error_pattern, *words, stdin=b''):
    """An empty pattern demands silence."""
    run = subprocess.run([*program, *words], input=stdin, capture_output=True, timeout=TIMEOUT,
                         check=False)
    out, error = text(run.stdout), text(run.stderr)
    name = f'{" ".join(words)} {stdin!r}'
    check(run.returncode == code, f'{name}: exit code {run.returncode}, not {code}\n{out}{error}')
    for pattern, said in ((out_pattern, out), (error_pattern, error)):
        check(re.search(pattern, said) if pattern else said == '',
              f'{name}: not {pattern!r}, but:\n{said}')
    return out


def script(commands, name='script'):
    with open(name, 'w', encoding='utf-8') as file:
        file.write(commands)
    return name


def run(commands, code, out_pattern, error_pattern, *options):
    return expect(code, out_pattern, error_pattern, 'run', 'torus.off', '--script',
                  script(commands), *options)


expect(0, '', '', 'make', 'torus', '12', '-o', 'torus.off')
expect(0, '', '', 'make', 'sphere', '150', '-o', 'sphere.off')
OPENED = r'^torus: 144 vertices, 144 faces, of torus\.off\n'

# Each command, what it says, and what it says where it fails.
for good, said, bad, complaint in (
        ('open torus.off --as b', r'b: 144 vertices', 'open no.off', r'^no\.off: cannot open: '),
        ('info', r'torus\n  vertices +144\n', 'info b', '^b: no such mesh is open, but: torus\n$'),
        ('components', r'torus \(components\)\n  components +1\n  vertices +144\n$', None, None),
        ('path --from 0 --to 30 -o p.obj', r'torus \(path\)\n  length +[0-9.]+\n  vertices +9\n  path +0 .*30\n$',
         'path --from 0 --to 144', '^torus: has no vertex 144; its vertices are 0 to 143\n$'),
        ('distance --from 3', r'\(distance\)\n  from vertex +3\n  vertices reached +144\n', None, None),
        ('colour --by curvature', 'torus: mean curvature', 'colour --by distance',
         '^torus: has no distances; '),
        ('picture -o p.png --size 200x150', r'torus: drawn in p\.png\n$', 'picture -o no/p.png',
         r'^no/p\.png: cannot create a temporary file beside it: '),
        ('pack --bits 12', r'torus \(packed\)\n  raw +[0-9]+ bytes\n  packed +[0-9]+ bytes, [0-9.]+ %\n$',
         'pack b', '^b: no such mesh'),
        ('save -o p.tadoc', r'torus: saved in p\.tadoc\n$', 'save -o no/p.tadoc',
         r'^no/p\.tadoc: cannot create a temporary file beside it: '),
        ('close', 'torus: closed\n$', 'close; close', "^session: no mesh is open; 'open FILE' "),
        ('tree', r'  Root \(TaNode\), modified\n   \|-- torus \(TaNode\)\n', 'tree b', '^b: no such mesh'),
        ('locks', 'no part of the tree is locked', None, None),
        ('queues', 'Compute', None, None),
        ('settings', 'digits +0 ', 'settings digits=x', '^settings: '),
        ('help', "(?s:  open .*  quit .*)'COMMAND --help' shows its options", None, None)):
    run(good, 0, OPENED + '(?s:.*)' + said, '')
    if bad is not None:
        run(bad, 1, OPENED, complaint.removesuffix('$'))
for file in ('p.obj', 'p.png', 'p.tadoc'):
    check(os.path.exists(file), f'{file} is missing')
    os.remove(file) if file != 'p.tadoc' else None
expect(0, 'verdict: sound', '', 'check', 'p.tadoc')
expect(0, r'^p: 144 vertices(?s:.*)path', '', 'run', 'p.tadoc', '--script',
       script('path --from 0 --to 1'))

run('locks\n\nfly', 1, '', '^script:3: there is no command "fly"; ')
run('info b\nclose', 1, OPENED + '$', r'^b: [^\n]*\nscript:1: failed: info b\n$')
run('info b\nclose', 1, OPENED + 'torus: closed\n$', '^b: ', '--keep-going')
run('info b &\nwait\nclose', 1, OPENED + '$', '^b: ')
expect(1, '', r'^no\.off: cannot open: [^\n]*\n$', 'run', 'no.off', '--script', script('locks'))
expect(1, '', r'^no: cannot open: [^\n]*\n$', 'run', 'torus.off', '--script', 'no')
expect(2, '', 'Usage: tamesh run', 'run', 'torus.off')

expect(0, OPENED + r'(?s:.*)torus: closed, not saved\n$', '', 'shell', 'torus.off',
       stdin=b'path --from 0 --to 1 &\r\nwait\nclose')
expect(1, '', '^there is no command "fly"; [^\n]*\nb: no mesh is open', 'shell',
       stdin=b'fly\ninfo b')
expect(0, '', '^session: no mesh is open', 'shell', stdin=b'info\nwait\nquit\nfly\n')
expect(2, '', '^there is no command', 'shell', stdin='ä'.encode())


def start(*words):
    work = subprocess.Popen([*program, *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE)
    end = threading.Timer(TIMEOUT, work.kill)  # else who reads its output may wait for ever
    end.daemon = True
    end.start()
    return work


# An interrupt ends a script, whatever it does just now, and leaves no half of a file.
MANY = 400
work = start('run', 'sphere.off', '--script', script('\n'.join(
    f'distance --from {i} &\nsave -o s{i}.tadoc' for i in range(MANY))))
for line in work.stdout:
    if b'saved' in line:
        break
work.send_signal(signal.SIGINT)
out, error = (text(part) for part in work.communicate(timeout=TIMEOUT))
check(work.returncode == 130, f'interrupted: exit code {work.returncode}\n{error}')
check(out.count('saved') < MANY - 1, 'the interrupt was not heeded')
check(set(error.splitlines()) <= {'sphere: interrupted', *(
    f'save -o s{i}.tadoc: interrupted' for i in range(MANY)), *(
        f'distance --from {i}: interrupted' for i in range(MANY))}, error)
files = sorted(glob.glob('s*.tadoc*'))
check(all(re.fullmatch(r's\d+\.tadoc', name) for name in files), f'left behind: {files}')
expect(0, 'verdict: sound', '', 'check', *files)

# It breaks what a shell does, which then goes on.
work = start('shell', 'sphere.off')
work.stdin.write(b';'.join(b'distance --from %d' % i for i in range(MANY)) + b'\n')
work.stdin.flush()
for line in work.stdout:
    if b'(distance)' in line:
        break
work.send_signal(signal.SIGINT)
for line in work.stderr:
    if b'interrupted' in line:
        break
out, error = (text(part) for part in work.communicate(b'path --from 0 --to 9\nlocks\n',
                                                      timeout=TIMEOUT))
check(work.returncode == 0, f'shell: exit code {work.returncode}\n{out}{error}')
check(out.count('(distance)') < MANY - 1, 'the interrupt was not heeded')
check('(path)' in out and 'thread ' not in out, f'behind the interrupt:\n{out}{error}')

sys.exit(1 if faults else 0)
