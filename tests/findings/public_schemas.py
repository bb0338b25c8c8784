"""What the public schemas of SARIF and JUnit say of the parts that zvrsit writes.

Facts from sarif-schema-2.1.0.json (OASIS SARIF 2.1.0) and junit-10.xsd (the xUnit plugin of Jenkins): the
names that each part may have, those that it must have, and the types and ranges of their values. A name
that is not here is refused, also where the schema knows it.
"""
import jsonschema

TEXT = {"type": "string"}
FROM_1 = {"type": "integer", "minimum": 1}
LEVEL = {"enum": ["none", "note", "warning", "error"]}


def part(required=(), **properties):
    return {"type": "object", "additionalProperties": False, "required": list(required),
            "properties": properties}


def list_of(items):
    return {"type": "array", "items": items}


ARTIFACT = part(uri={"type": "string", "format": "uri-reference"}, uriBaseId=TEXT)
REGION = part(startLine=FROM_1, startColumn=FROM_1)
RULE = part(["id"], id=TEXT, shortDescription=part(["text"], text=TEXT),
            defaultConfiguration=part(enabled={"type": "boolean"}, level=LEVEL))
RESULT = part(["message"], ruleId=TEXT, ruleIndex={"type": "integer", "minimum": -1}, level=LEVEL,
              message=part(["text"], text=TEXT),
              locations=list_of(part(physicalLocation=part(["artifactLocation"], region=REGION,
                                                           artifactLocation=ARTIFACT))))
RUN = part(["tool"], tool=part(["driver"], driver=part(["name"], name=TEXT, version=TEXT,
                                                       rules=list_of(RULE))),
           columnKind={"enum": ["utf16CodeUnits", "unicodeCodePoints"]}, results=list_of(RESULT),
           originalUriBaseIds={"type": "object", "additionalProperties": ARTIFACT})
SARIF = part(["version", "runs"], version={"enum": ["2.1.0"]}, runs=list_of(RUN),
             **{"$schema": {"type": "string", "format": "uri"}})

# By element: its attributes, those that it must have, and its children.
JUNIT = {
    "testsuites": ({"name", "time", "tests", "failures", "errors"}, set(), {"testsuite"}),
    "testsuite": ({"name", "tests", "failures", "errors", "skipped", "time"},
                  {"name", "tests", "failures", "errors"}, {"testcase", "system-out"}),
    "testcase": ({"name", "time", "classname"}, {"name"}, {"failure", "system-out"}),
    "failure": ({"type", "message"}, set(), set()),
    "system-out": (set(), set(), set()),
}


def validate_sarif(value):
    jsonschema.validate(value, SARIF, format_checker=jsonschema.FormatChecker())


def validate_junit(element):
    attributes, required, children = JUNIT[element.tag]
    assert required <= set(element.keys()) <= attributes, (element.tag, element.attrib)
    for child in element:
        assert child.tag in children, (element.tag, child.tag)
        validate_junit(child)
