"""schemas_test.py COMMAND TREE

Holds what the command writes as JSON against the schemas of docs/schemas, and these against what
the command writes: a key or a value that no output has is a fault of theirs."""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from jsonschema import Draft202012Validator, RefResolver
from jsonschema.validators import extend

from sample_files import Files

COMMAND, TREE = sys.argv[1], pathlib.Path(sys.argv[2])
SCHEMAS = {path.name.removesuffix(".schema.json"): json.loads(path.read_text())
           for path in (TREE / "docs" / "schemas").glob("*.schema.json")}
BY_ID = {schema["$id"]: schema for schema in SCHEMAS.values()}
# Those that outputs are held against, by subcommand; what they share stands in `common`.
OF_SUBCOMMAND = {"info": {"info"}, "check": {"check", "check-list", "check-summary", "manifest", "policy"}, "ink": {"ink"},
                 "palette": {"palette"}, "hash": {"hash"}, "diff": {"diff"}}
FORMATS = ["ct", "lw", "jpeg", "tiff", "tiffit", "page"]

seen = set()  # what outputs have: the id of a schema's node, and a key or a value


def recording(keyword, values_of):
    """The check of a keyword, which notes what it is given of instances that the whole schema
    takes: of the branches of an anyOf one alone fits."""
    check = Draft202012Validator.VALIDATORS[keyword]

    def note(validator, value, instance, schema):
        plain = Draft202012Validator(schema, resolver=validator.resolver)
        if plain.is_valid(instance):
            seen.update((id(value), one) for one in values_of(instance))
        yield from check(validator, value, instance, schema)

    return note


Recorder = extend(Draft202012Validator, {
    "properties": recording("properties", lambda one: one if isinstance(one, dict) else []),
    "enum": recording("enum", lambda one: [one])})


def nodes(schema, path):
    """The nodes of a schema, each with its place."""
    if isinstance(schema, dict):
        yield path, schema
        for key, value in schema.items():
            yield from nodes(value, f"{path}/{key}")
    elif isinstance(schema, list):
        for value in schema:
            yield from nodes(value, path)


def all_nodes():
    for name, schema in SCHEMAS.items():
        yield from nodes(schema, name)


def objects():
    """The nodes that tell the keys of an object."""
    return [(path, node) for path, node in all_nodes()
            if "properties" in node and not path.endswith("/properties")]


def output_of(*words):
    done = subprocess.run([COMMAND, *map(str, words)], capture_output=True)
    if done.returncode not in (0, 1) and not (words[0] == "diff" and done.stdout):
        raise AssertionError(f"{words}: status {done.returncode}, {done.stderr}")
    return done.stdout.decode("ascii")


def batch_outputs(folder):
    """A run over a folder by each policy, and one over what hasn't changed since."""
    manifest = folder / "manifest"
    for policy in sorted((TREE / "docs" / "policies").glob("*.json")):
        yield "policy", json.loads(policy.read_text())
        for words in ["--hash"], ["--since", manifest]:
            *files, summary = output_of("check", "-r", folder, "--json-lines", "--policy", policy,
                                        "--manifest", manifest, *words).splitlines()
            yield "check", [json.loads(one) for one in files]
            yield "check-summary", json.loads(summary)
            for line in manifest.read_text().splitlines():
                yield "manifest", json.loads(line)


def outputs(files):
    """The name of a schema and what is to fit it, of all the files in many ways."""
    def told(schema, *words):
        return schema, json.loads(output_of(*words))

    seeds = sorted((TREE / "fuzz" / "seeds").glob("*/*"))
    for group in files.good, files.cut, files.bad, seeds:
        yield told("info", "info", "--json", *group)
        yield told("info", "info", "--json", "--runs", *group)
        yield told("check", "check", "--json", *group)
        yield told("ink", "ink", "--json", *group)
        yield told("hash", "hash", "--json", *group)
    for name in FORMATS:
        yield told("info", "info", "--json", "--as", name, *files.good, *files.bad)
        yield told("check", "check", "--json", "--as", name, *files.good)
    for line in output_of("check", "--json-lines", *files.good, *files.bad).splitlines():
        yield "check", [json.loads(line)]
    for path in files.line_work:
        yield told("palette", "palette", "--json", path)
    job = files.folder / "job"
    plates, drawing = job / "caf\udce9.ct", job / "drawing.lw"
    for pair in [(plates, plates), (plates, job / "photograph.ct"), (plates, files.folder / "non\udce9"),
                 (drawing, job / "see-through\udce9.lw"), (drawing, plates)]:
        yield told("diff", "diff", "--json", *pair)
    yield told("check-list", "check", "--list", "--json")
    yield from batch_outputs(files.folder)


def faults_of(schema, output):
    resolver = RefResolver.from_schema(SCHEMAS[schema], store=BY_ID)
    for fault in Recorder(SCHEMAS[schema], resolver=resolver).iter_errors(output):
        yield f"{schema} {fault.json_path}: {fault.message}"


class Schemas(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            cls.outputs = list(outputs(Files(pathlib.Path(folder), COMMAND)))
        cls.faults = [fault for one in cls.outputs for fault in faults_of(*one)]

    def test_schemas_are_schemas(self):
        for name, schema in SCHEMAS.items():
            with self.subTest(name):
                Draft202012Validator.check_schema(schema)
                self.assertTrue(schema["$id"].endswith(f"/{name}.schema.json"))

    def test_every_output_fits_its_schema(self):
        self.assertEqual(self.faults, [])

    def test_every_key_is_written_by_some_output(self):
        unseen = [f"{path}/{key}" for path, node in objects() for key in node["properties"]
                  if (id(node["properties"]), key) not in seen]
        self.assertEqual(unseen, [])

    def test_every_value_is_written_by_some_output(self):
        """But for the codes of failures, which don't all come from files."""
        unseen = [f"{path}: {value}" for path, node in all_nodes() for value in node.get("enum", [])
                  if not path.endswith("/failureCode") and (id(node["enum"]), value) not in seen]
        self.assertEqual(unseen, [])

    def test_codes_are_those_of_the_library(self):
        codes = set(re.findall(r"=\s*(\d+);", (TREE / "core" / "failure_codes.h").read_text()))
        guide = (TREE / "docs" / "failure-codes.md").read_text()
        self.assertEqual(set(re.findall(r"^\| (\d+) \|", guide, re.M)), codes)
        schema = SCHEMAS["common"]["$defs"]["failureCode"]["enum"]
        self.assertEqual(set(map(str, schema)), codes | {"0"})

    def test_guide_tells_no_other_keys(self):
        guide = (TREE / "docs" / "command.md").read_text()
        rows = "".join(re.findall(r"^\| Key \|.*\n((?:\|.*\n)+)", guide, re.M))
        cells = re.findall(r"^\| (`.*?) \|", rows, re.M)
        told = {key for cell in cells for key in re.findall(r"\w+", cell)}
        self.assertTrue(told)
        self.assertLessEqual(told, {key for _, node in objects() for key in node["properties"]})

    def test_findings_are_listed(self):
        listed = {rule["id"] for schema, output in self.outputs if schema == "check-list"
                  for rule in output}
        told = {rule for schema, output in self.outputs if schema == "check"
                for file in output for rule in file["counts"]}
        self.assertLessEqual(told, listed)

    def test_objects_take_no_other_keys_and_say_what_theirs_mean(self):
        for path, node in objects():
            self.assertIn("additionalProperties", node, path)
            for key, value in node["properties"].items():
                self.assertTrue(value.keys() & {"description", "$ref", "const"}, f"{path}/{key}")

    def test_every_subcommand_that_writes_json_has_schemas(self):
        listed = output_of("--help").partition("Subcommands:")[2].partition("\n\n")[0]
        subcommands = re.findall(r"^  (\S+)", listed, re.M)
        writing = {one for one in subcommands if "--json" in output_of(one, "--help")}
        self.assertEqual(writing, set(OF_SUBCOMMAND))
        self.assertEqual(set().union(*OF_SUBCOMMAND.values(), {"common"}), set(SCHEMAS))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
