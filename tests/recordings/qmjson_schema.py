"""Checks documents against formats/qmjson.schema.json."""

import json

import jsonschema


def faults(document, path):
    """What is wrong with a parsed document by the schema in that file, told in lines."""
    with open(path, encoding="utf-8") as file:
        validator = jsonschema.Draft7Validator(json.load(file))
    return [f"against the schema: {error.message} at {list(error.absolute_path)}"
            for error in validator.iter_errors(document)]
