"""What a Grafana dashboard asks Prometheus for."""

import json
import re

from contrib_support import CONTRIB

DASHBOARD = CONTRIB / "grafana" / "talvik-alarms.json"


def load():
    return json.loads(DASHBOARD.read_text())


def panels_in(dashboard):
    """The panels that show something: rows are headings."""
    return [panel for panel in dashboard["panels"] if panel["type"] != "row"]


def expressions_in(dashboard):
    """The panels' queries as they stand there, with the variables."""
    return [target["expr"] for panel in panels_in(dashboard) for target in panel["targets"]]


def chosen(expression, instance=".*"):
    """A query with its variables filled in."""
    return expression.replace("$instance", instance)


def metrics_in(expression):
    """The names of the metrics in an expression: the words that are no function, label, number or operator."""
    bare = re.sub(r'"[^"]*"', '""', expression)
    bare = re.sub(r"\{[^}]*\}|\[[^\]]*\]", " ", bare)
    bare = re.sub(r"\b(?:by|without|on|ignoring|group_left|group_right)\s*\([^)]*\)", " ", bare)
    words = set(re.findall(r"[a-zA-Z_:][\w:]*\b(?!\s*\()", bare))
    return words - {"and", "or", "unless", "bool", "by"}
