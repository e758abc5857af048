# SPDX-License-Identifier: MIT
"""The defects that can be planted into a C++ source: found in its text, without a compiler.

Comments, strings, preprocessor lines, static_asserts and attributes stay as they are. The layout that clang-format
gives tells binary operators from template brackets, pointers and references: they alone have spaces on both sides.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<string>R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
      | (?P<number>(?:0[xX][0-9a-fA-F']+|\d[\d']*(?:\.\d*)?(?:[eE][-+]?\d+)?)[uUlLfF]*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\s])""",
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

# What a binary operator is turned into.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!=", "<=", ">="], "!=": ["==", "<", ">"],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="], "^=": ["|="],
}  # fmt: skip
UNARY = {"++": ["--"], "--": ["++"], "!": [""], "~": [""]}
WORDS = {
    "true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"], "first": ["last"], "last": ["first"],
    "removeFirst": ["removeLast"], "removeLast": ["removeFirst"], "append": ["prepend"], "prepend": ["append"],
    "push_back": ["push_front"], "pop_front": ["pop_back"], "front": ["back"], "back": ["front"],
}  # fmt: skip
LOCK = re.compile(r"(?:MutexHolder|QMutexLocker|CommunicationTurn|std::(?:lock_guard|unique_lock|scoped_lock)\b.*?)\s*\w+\s*\(")
LOCKS = ["listMutex", "imageMutex", "stationMutex"]
DECLARATION = re.compile(r"(?:[\w:]+(?:<.*?>)?[\s*&]+)+\w+\s*(?:[=;({\[]|$)")
NO_STATEMENT = re.compile(
    r"(?:const|constexpr|auto|static|typedef|using|struct|class|enum|union|namespace|template|public|protected|private"
    r"|return\b(?=.)|case|default|if|for|while|switch|do|else|try|catch|goto|extern|friend|virtual|explicit|inline|throw"
    r"|unsigned|signed|int|char|bool|long|short|float|double|void|Q_[A-Z]+|static_assert)\b"
)


@dataclass(frozen=True)
class Defect:
    """A piece of a file and what stands there instead."""

    path: str
    begin: int
    end: int
    text: str
    line: int
    old: str  # the lines that it touches, before and after, in one line each
    new: str

    def planted(self, source):
        return source[: self.begin] + self.text + source[self.end :]

    def __str__(self):
        return f"{self.path}:{self.line}\n  - {self.old}\n  + {self.new}"


class Source:
    def __init__(self, path, text):
        self.path = path
        self.text = text
        found = (match for match in TOKEN.finditer(text) if match.lastgroup not in ("comment", "directive"))
        self.tokens = list(found)
        self.words = [match.group() for match in self.tokens]
        self.untouched = self._untouched()
        self.control_ends = self._control_ends()

    def closing(self, opening):
        """The index of the bracket that closes the one at this index."""
        pairs = {"(": ")", "{": "}", "[": "]"}
        depth = 0
        for i in range(opening, len(self.words)):
            if self.words[i] == self.words[opening]:
                depth += 1
            elif self.words[i] == pairs[self.words[opening]]:
                depth -= 1
                if depth == 0:
                    return i
        return len(self.words) - 1

    def _untouched(self):
        """Indices of tokens that only say something to the compiler."""
        result = set()
        for i, word in enumerate(self.words[:-1]):
            attribute = re.fullmatch(r"PLC_[A-Z_]+|static_assert|__attribute__|alignas|decltype|asm|noexcept", word)
            if attribute and self.words[i + 1] == "(":
                result.update(range(i, self.closing(i + 1) + 1))
            if word == "operator":
                result.update(range(i, i + 3))
        return result

    def _control_ends(self):
        """Indices of the brackets that close the head of an if or a loop."""
        return {
            self.closing(i + 1): i
            for i, word in enumerate(self.words[:-1])
            if word in ("if", "for", "while", "switch") and self.words[i + 1] == "("
        }

    def spaced(self, i):
        match = self.tokens[i]
        return self.text[match.start() - 1] in " \n" and self.text[match.end() : match.end() + 1] in (" ", "\n")

    def defect(self, begin, end, text):
        first = self.text.rfind("\n", 0, begin) + 1
        last = self.text.find("\n", end)
        before = self.text[first:last]
        after = self.text[first:begin] + text + self.text[end:last]
        line = self.text.count("\n", 0, begin) + 1
        return Defect(self.path, begin, end, text, line, " ".join(before.split()), " ".join(after.split()))

    def instead_of(self, i, texts):
        match = self.tokens[i]
        return [self.defect(match.start(), match.end(), text) for text in texts]


def _operators(source):
    for i, word in enumerate(source.words):
        if i in source.untouched:
            continue
        if word in BINARY and source.spaced(i):
            no_order = source.words[i + 1 : i + 2] == ["nullptr"]
            yield from source.instead_of(i, BINARY[word][: 1 if no_order else None])
        elif word in UNARY and not source.spaced(i):
            yield from source.instead_of(i, UNARY[word])


def _is_pure(source, i):
    return source.words[i - 1] == "=" and source.words[i - 2] in (")", "const", "override", "noexcept")


def _numbers(source):
    for i, match in enumerate(source.tokens):
        if match.lastgroup != "number" or i in source.untouched or _is_pure(source, i):
            continue
        digits, suffix = re.fullmatch(r"(.*?)([uUlLfF]*)", match.group()).groups()
        if digits[:2].lower() == "0x":  # F is a digit here
            digits, suffix = re.fullmatch(r"(.*?)([uUlL]*)", match.group()).groups()
        if source.words[i - 1] == "-" and not source.spaced(i - 1):
            yield source.defect(source.tokens[i - 1].start(), match.start(), "")
        if re.fullmatch(r"[\d.']*\.[\d.']*|.*[eE]-?\d+", digits) and digits[:2].lower() != "0x":
            yield from source.instead_of(i, [f"({match.group()} * 2)"])
            continue
        value = int(digits.replace("'", ""), 0) if digits != "00" else 0
        changed = [value + 1] + ([value - 1] if value else [])
        yield from source.instead_of(i, [f"{number}{suffix}" for number in changed])


def _words(source):
    for i, word in enumerate(source.words):
        if i in source.untouched or word not in WORDS:
            continue
        if word in ("true", "false") or source.words[i + 1] in ("(", "<"):
            yield from source.instead_of(i, WORDS[word])


def _conditions(source):
    for close, head in source.control_ends.items():
        keyword = source.words[head]
        if keyword not in ("if", "while") or source.words[head - 1] == "}" and source.words[close + 1] == ";":
            continue
        begin, end = source.tokens[head + 1].end(), source.tokens[close].start()
        if source.text[begin:end].count(";") or re.match(r"(?:const|auto)\b", source.text[begin:end]):
            continue  # declares something
        for text in ("true", "false") if keyword == "if" else ("false",):
            yield source.defect(begin, end, text)
    for i, word in enumerate(source.words):
        before = source.words[i - 2] if i > 1 else ""
        named = source.tokens[i - 1].lastgroup == "word" and before in ("=", "(", "return", ",", "?", ":")
        if word == "?" and named:
            yield from source.instead_of(i - 1, ["!" + source.words[i - 1]])


def _scope(source, i):
    """What the brace at this index opens: code, or a class, a namespace, a list of values."""
    since = []
    for j in range(i - 1, -1, -1):
        if source.words[j] in (";", "{", "}"):
            break
        since.append(source.words[j])
    if not since:
        return "code"
    if "namespace" in since or "extern" in since:
        return "namespace"
    if "(" not in since and {"class", "struct", "union", "enum"} & set(since):
        return "class"
    if since[0] in ("=", ",", "(", "return") or (since[0] in (">",)) or ("(" not in since and since[0] not in ("else", "do", "try")):
        return "values"
    return "code"


def _starts(source):
    """Indices at which a statement inside a function begins."""
    scopes = []
    for i, word in enumerate(source.words):
        before = source.words[i - 1] if i else ";"
        if scopes and scopes[-1] == "code":
            label = before == ":" and source.words[i - 2] == "default" or before == ":" and "case" in source.words[i - 4 : i]
            if before in (";", "{", "}", "else", "do") or label or i - 1 in source.control_ends:
                yield i
        if word == "{":
            scopes.append(_scope(source, i))
        elif word == "}" and scopes:
            scopes.pop()


def _statement_end(source, i):
    while i < len(source.words) and source.words[i] != ";":
        if source.words[i] in ("(", "{", "["):
            i = source.closing(i)
        if source.words[i] in ("}", ")") and i not in range(len(source.words)):
            return None
        i += 1
    return i if i < len(source.words) else None


def _statements(source):
    in_heads = set()
    for close, head in source.control_ends.items():
        in_heads.update(range(head, close + 1))
    for i in _starts(source):
        if i in in_heads or i in source.untouched or source.words[i] in ("}", "{", ";"):
            continue
        end = _statement_end(source, i)
        if end is None:
            continue
        begin, stop = source.tokens[i].start(), source.tokens[end].start()
        text = source.text[begin:stop]
        if LOCK.match(text) or re.match(r"CommunicationTurn \w+$", text):
            yield source.defect(begin, stop, "")
            for lock in LOCKS:
                yield from (source.defect(begin, stop, text.replace(lock, other)) for other in LOCKS if lock in text and other != lock)
        elif not NO_STATEMENT.match(text) and not DECLARATION.match(text + ";") or text in ("return", "break", "continue"):
            yield source.defect(begin, stop, "")


def defects(path, text):
    """All defects that can be planted into the text of a file, in the order of the text."""
    source = Source(path, text)
    found = {}
    for kind in (_operators, _numbers, _words, _conditions, _statements):
        for defect in kind(source):
            found.setdefault((defect.begin, defect.end, defect.text), defect)
    return [found[key] for key in sorted(found)]
