"""Writes texts of HTML, each with the tokens that another tokenizer finds in it, as JSON.

token_cases.py OUTPUT. Every named reference, numbers of characters, and texts put together at
random, the same ones each time.
"""
import html.entities
import json
import random
import sys

from html5lib import _tokenizer
from html5lib.constants import tokenTypes

STATES = {"data": "p", "rcdata": "title", "rawtext": "style", "scriptData": "script",
          "plaintext": "plaintext", "cdataSection": "p"}
PIECES = """< </ <! <? > /> / = ' " ` & ; ! - -- --> --!> <!-- <!--> <!---> ]]> ]] <![CDATA[ &# &#x
&amp &notin; &not; &copy= &lt;b &Aacute é 日本 a B 7 x <a> </a> <P <p> </p </ <br/> <b\tC= <i/j>
<title> </title> </TITLE\t </titlex> <style> </style> </style/ <script> </script> </SCRIPT
<!--<script> <script </script\f --> <plaintext> </plaintext> <!doctype> <!DOCTYPE <!DOCTYPE\thtml
<!dOcTyPe\fx\tpublic public PUBLIC"" system SYSTEM'' 'y' "z" <a\tb=c <a\tb='c' <a\tb="c"d
e="&lt;&copy=1&copyx&notit;" f=&amp g=h/ g=i\t=j \0 \r \r\n \n \t \f \u000b \u0080 \ufffd \U0010ffff
""".encode().decode("raw_unicode_escape").encode("latin1").decode().split(" ")


def rows_of(text, state, last):
    tokenizer = _tokenizer.HTMLTokenizer(text)
    tokenizer.state = getattr(tokenizer, state + "State")
    tokenizer.currentToken = {"type": tokenTypes["StartTag"], "name": last}
    for token in tokenizer:
        kind, data = token["type"], token.get("data")
        if kind in (tokenTypes["Characters"], tokenTypes["SpaceCharacters"]):
            yield ["Character", data]
        elif kind == tokenTypes["StartTag"]:
            yield ["StartTag", token["name"], data] + [True] * token["selfClosing"]
        elif kind == tokenTypes["EndTag"]:
            yield ["EndTag", token["name"]]
        elif kind == tokenTypes["Comment"]:
            yield ["Comment", data]
        elif kind == tokenTypes["Doctype"]:
            yield ["DOCTYPE", token["name"] or None, token["publicId"], token["systemId"],
                   token["correct"]]


def texts():
    for name in html.entities.html5:
        for after in ("", "x", "=", "&"):
            yield f"&{name}{after}<a b=&{name}{after}>", "data"
    numbers = [*range(0x21), *range(0x7E, 0xA1), 0xD7FF, 0xD800, 0xDFFF, 0xE000, 0xFDD0, 0xFFFD,
               0xFFFF, 0x1F600, 0x10FFFF, 0x110000, 2**32, 2**32 + 65, 10**30]
    for number in numbers:
        for text in (f"&#{number};", f"&#{number}z", f"&#x{number:x};", f"&#X{number:X}z"):
            yield text + f"<a b='{text}'>", random.choice(("data", "rcdata"))
    for _ in range(8000):
        pieces = random.choices(PIECES, k=random.randint(1, 9))
        state = random.choices(list(STATES), [9, 1, 1, 3, 1, 1])[0]
        text = random.choice(("", " ")).join(pieces)
        # The other one also does what is left there to whoever builds the tree.
        yield text.replace("\0", "") if state == "cdataSection" else text, state


def main():
    random.seed(40)
    cases = [{"text": text, "state": state, "last": STATES[state],
              "tokens": list(rows_of(text, state, STATES[state]))} for text, state in texts()]
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        json.dump(cases, file)


main()
