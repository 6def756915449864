#!/usr/bin/env python3
"""Whether the tests would notice: changes the code by one small fault at a time and runs them.

    tests/mutation/mutate.py [--count N] [--seed N] [--operator NAME]... [--list] [FOLDER|FILE]...

Each fault (a mutant) is a change of one line: a comparison turned, a number one off, a statement
dropped. It is made in a copy of the tree below build/mutation, which is built there and tried with
the test programs that belong to its folder. A mutant that they let pass is a survivor: it is
printed as a difference, and either shows a test that is missing, or cannot be seen from outside.
Nothing is changed outside the build folder. Not part of the suite: a mutant takes some seconds to
compile and test.

    --count N        so many mutants, drawn evenly (40)
    --seed N         another draw of them (1)
    --operator NAME  only these operators
    --list           print the mutants instead of trying them
"""
import argparse
import pathlib
import random
import re
import resource
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / 'build' / 'mutation'
COPY = BUILD / 'source'
OUT = BUILD / 'out'

# Folder of the code, and the test programs that belong to it. The first that fails ends a try.
TESTS = {
    'engine/core': ['test_core'],
    'engine/outside': ['test_outside'],
    'engine/scene': ['test_scene', 'test_undo'],
    'engine/undo': ['test_undo'],
    'engine/editing': ['test_editing'],
    'engine/states': ['test_states'],
    'engine/scenefile': ['test_scenefile'],
    'engine/import': ['test_import'],
    'engine/update': ['test_update'],
    'engine/render': ['test_render'],
    'engine/publish': ['test_publish'],
    'engine/dialog': ['test_dialog'],
    'engine/application': ['test_application', 'test_threads'],
    'source': ['test_source', 'test_hostcalls'],
}
# Build targets by folder of code.
TARGETS = {folder: folder.replace('/', '_') for folder in TESTS}
TARGETS['source'] = 'stagemarks_code'
PROGRAMS_NEEDED_BY = {
    'test_application',
    'test_editing',
    'test_hostcalls',
    'test_publish',
    'test_render',
    'test_source',
    'test_states',
}

# Limits for the tests of a mutant: CPU time, as a multiple of their usual time plus some
# seconds, and bytes of address space.
CPU_FACTOR = 5
CPU_MORE = 10  # seconds
MEMORY = 6 << 30


class Line:
    """A line of code, and the same with what is in texts and comments blanked out."""

    def __init__(self, text, in_comment):
        self.text = text
        self.code, self.in_comment = self.blanked(text, in_comment)

    @staticmethod
    def blanked(text, in_comment):
        out = []
        quote = ''
        i = 0
        while i < len(text):
            two = text[i : i + 2]
            if in_comment:
                if two == '*/':
                    in_comment = False
                    out.append(' ')
                    i += 1
                out.append(' ')
            elif quote:
                if text[i] == '\\':
                    out.append(' ')
                    i += 1
                elif text[i] == quote:
                    quote = ''
                out.append(' ')
            elif two == '//':
                break
            elif two == '/*':
                in_comment = True
                out.append(' ')
            elif text[i] == '"' or (text[i] == "'" and not text[i - 1 : i].isalnum()):
                quote = text[i]
                out.append(' ')
            else:
                out.append(text[i])
            i += 1
        return ''.join(out).ljust(len(text))[: len(text)], in_comment


def exchanged(line, match, new):
    return line.text[: match.start()] + new + line.text[match.end() :]


def by_pattern(pattern, replacement):
    """An operator: each place of the pattern, replaced by what `replacement` says of it, if any."""
    compiled = re.compile(pattern)

    def mutants(line):
        for match in compiled.finditer(line.code):
            new = replacement(match)
            if new is not None:
                yield exchanged(line, match, new)

    return mutants


def from_table(table):
    pattern = '|'.join(re.escape(old) for old in sorted(table, key=len, reverse=True))
    return by_pattern(pattern, lambda match: table[match[0]])


def another_number(match):
    text = match[0]
    if re.fullmatch(r'\d+', text):
        return str(int(text) + 1)
    number = re.fullmatch(r'(\d+\.\d+)(F?)', text)
    return '%g%s' % (float(number[1]) * 1.5 + 0.1, number[2]) if number else None


# A call or an assignment that is a whole line; declarations and what ends a function are none.
STATEMENT = re.compile(
    r'^\s+(?!return\b|throw\b|break\b|continue\b|using\b|delete\b|else\b|case\b|co_|static_assert\b)'
    r'(?:\*?[\w.\[\]>:-]+(?:\([^;{}]*\)[\w.\[\]>-]*)* [+|&*/-]?= [^;{}]+|(?:[\w.>:\[\]-]|\(\))+\([^;{}]*\)'
    r'|(?:\+\+|--)[\w.>-]+|[\w.>-]+(?:\+\+|--));\s*$'
)
GUARD = re.compile(r'^(\s*(?:} else )?if \()([^;{}]+)(\) (?:return\b[^;]*;|continue;|break;|[\w.]+\([^;]*\);|\{)\s*)$')


def dropped_statement(line):
    if STATEMENT.match(line.code) and '::' not in line.code.split('(')[0].split('=')[0]:
        indent = line.text[: len(line.text) - len(line.text.lstrip())]
        yield indent + ';'


def dropped_guard(line):
    match = GUARD.match(line.code)
    if match and match[2].count('(') == match[2].count(')'):
        start, end = match.span(2)
        yield line.text[:start] + 'false && (' + line.text[start:end] + ')' + line.text[end:]


OPERATORS = {
    'comparison': from_table({' < ': ' <= ', ' <= ': ' < ', ' > ': ' >= ', ' >= ': ' > '}),
    'equality': from_table({' == ': ' != ', ' != ': ' == '}),
    'logic': from_table({' && ': ' || ', ' || ': ' && '}),
    'negation': by_pattern(r'(?<![\w!])!(?=[\w(])', lambda match: ''),
    'arithmetic': from_table({' + ': ' - ', ' - ': ' + ', ' * ': ' / ', ' / ': ' * '}),
    'number': by_pattern(r'(?<![\w.])(?:\d+\.\d+F?|\d+)(?![\w.])', another_number),
    'switch': by_pattern(r'\b(?:true|false)\b', lambda m: 'false' if m[0] == 'true' else 'true'),
    'statement': dropped_statement,
    'guard': dropped_guard,
}


class Mutant:
    def __init__(self, path, number, old, new, operator):
        self.path, self.number, self.old, self.new, self.operator = path, number, old, new, operator

    def __str__(self):
        return '%s:%d (%s)\n  - %s\n  + %s' % (
            self.path,
            self.number,
            self.operator,
            self.old.strip(),
            self.new.strip(),
        )


def mutants_of(path, operators):
    in_comment = False
    for number, text in enumerate((ROOT / path).read_text().split('\n'), 1):
        line = Line(text, in_comment)
        in_comment = line.in_comment
        if re.match(r'\s*(#|static_assert|template|using|namespace)', line.code):
            continue
        for name in operators:
            for new in OPERATORS[name](line):
                yield Mutant(path, number, text, new, name)


def git_files(*patterns):
    listed = subprocess.run(
        ['git', 'ls-files', '--cached', '--others', '--exclude-standard', *patterns],
        cwd=ROOT,
        check=True,
        capture_output=True,
        text=True,
    )
    return [path for path in listed.stdout.split('\n') if path and (ROOT / path).is_file()]


def copy_tree():
    """Files that have not changed keep their times, so that they are not compiled again."""
    files = git_files()
    for path in files:
        target = COPY / path
        contents = (ROOT / path).read_bytes()
        if target.is_file() and target.read_bytes() == contents:
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(contents)
        target.chmod((ROOT / path).stat().st_mode)
    wanted = set(files)
    for target in COPY.rglob('*'):
        if target.is_file() and str(target.relative_to(COPY)) not in wanted:
            target.unlink()


def run(command, **how):
    return subprocess.run(command, capture_output=True, text=True, errors='replace', **how)


def build(targets):
    return run(['ninja', '-C', str(OUT), *targets])


def prepare(folders):
    copy_tree()
    programs = sorted({program for folder in folders for program in TESTS[folder]})
    alone = not PROGRAMS_NEEDED_BY & set(programs)
    options = {
        'CMAKE_BUILD_TYPE': 'Debug',
        # Whoever looks behind the end of an array is told, as the sanitizers tell.
        'CMAKE_CXX_FLAGS_DEBUG': '-O0 -D_GLIBCXX_ASSERTIONS',
        'CMAKE_LINK_DEPENDS_NO_SHARED': 'ON',
        'STAGEMARKS_ALONE': ';'.join(TARGETS[folder] for folder in folders),
        'STAGEMARKS_DESKTOP': 'OFF',
        'STAGEMARKS_NODE': 'OFF',
        'STAGEMARKS_TESTS_WITH_PROGRAMS': 'OFF' if alone else 'ON',
    }
    given = ['-D%s=%s' % option for option in options.items()]
    for done in (
        run(['cmake', '-S', str(COPY), '-B', str(OUT), '-G', 'Ninja', *given]),
        build(programs),
    ):
        if done.returncode != 0:
            sys.exit('The tree does not build as it is:\n' + done.stdout + done.stderr)


class Trial:
    """The test programs of a folder, and what they take when nothing is wrong."""

    def __init__(self, programs):
        self.programs = programs
        self.cpu = {}
        for program in programs:
            before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
            done = self.test(program, None)
            if done.returncode != 0:
                sys.exit('%s fails as it is:\n%s' % (program, done.stdout[-4000:]))
            self.cpu[program] = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before

    def test(self, program, seconds):
        def limit():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if seconds is not None:
                resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
                resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))

        command = [str(OUT / 'bin' / program), '--gtest_fail_fast', '--gtest_brief=1']
        # Whoever waits for what never comes takes no time of a processor.
        most = None if seconds is None else 60 + 10 * seconds
        try:
            return run(command, preexec_fn=limit, timeout=most)
        except subprocess.TimeoutExpired:
            return subprocess.CompletedProcess(command, 1, 'It waited for ever.', '')

    def kills(self, mutant):
        """What happened: 'caught', 'survived', or 'no code' where it does not compile."""
        target = COPY / mutant.path
        whole = target.read_text()
        lines = whole.split('\n')
        assert lines[mutant.number - 1] == mutant.old
        lines[mutant.number - 1] = mutant.new
        target.write_text('\n'.join(lines))
        try:
            if build(self.programs).returncode != 0:
                return 'no code'
            for program in self.programs:
                seconds = int(self.cpu[program] * CPU_FACTOR + CPU_MORE)
                if self.test(program, seconds).returncode != 0:
                    return 'caught'
            return 'survived'
        finally:
            target.write_text(whole)


def folder_of(path):
    return next((folder for folder in TESTS if path.startswith(folder + '/')), None)


def chosen_mutants(arguments):
    operators = arguments.operator or list(OPERATORS)
    places = arguments.places or list(TESTS)
    files = []
    for place in places:
        place = place.rstrip('/')
        files += [place] if place.endswith('.cpp') else git_files(place + '/*.cpp')
    unknown = [path for path in files if folder_of(path) is None]
    if unknown or not files:
        sys.exit('No test program is known for: ' + ' '.join(unknown or places))
    mutants = [mutant for path in files for mutant in mutants_of(path, operators)]
    random.Random(arguments.seed).shuffle(mutants)
    return sorted(mutants[: arguments.count], key=lambda m: (folder_of(m.path), m.path, m.number))


def parse():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument('--count', type=int, default=40)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--operator', action='append', choices=sorted(OPERATORS))
    parser.add_argument('--list', action='store_true')
    parser.add_argument('places', nargs='*', metavar='FOLDER|FILE')
    return parser.parse_args()


def main():
    arguments = parse()
    mutants = chosen_mutants(arguments)
    if arguments.list:
        print('\n'.join(map(str, mutants)))
        return
    prepare(sorted({folder_of(mutant.path) for mutant in mutants}))
    trials = {}
    results = {'caught': 0, 'survived': 0, 'no code': 0}
    for number, mutant in enumerate(mutants, 1):
        folder = folder_of(mutant.path)
        if folder not in trials:
            trials[folder] = Trial(TESTS[folder])
        result = trials[folder].kills(mutant)
        results[result] += 1
        print('%d of %d: %s' % (number, len(mutants), result), file=sys.stderr, flush=True)
        if result == 'survived':
            print(mutant, flush=True)
    tried = results['caught'] + results['survived']
    print('%d of %d caught; %d did not compile.' % (results['caught'], tried, results['no code']))


if __name__ == '__main__':
    main()
