"""Reads an exported workbook back with openpyxl: prints every cell (type,
value, number format), the cached values of the formulas, and the charts.

Lines:  properties TITLE | SUBJECT | AUTHOR
        cell SHEET!A1 TYPE VALUE | FORMAT
        cached SHEET!A1 VALUE
        chart SHEET TYPE DIRECTION SERIES CATEGORIES VALUES TITLE
        part NAME          (the zip's chart parts)
"""
import sys
import zipfile

import openpyxl

path = sys.argv[1]
formulas = openpyxl.load_workbook(path)
values = openpyxl.load_workbook(path, data_only=True)
print("sheets", "|".join(formulas.sheetnames))
props = formulas.properties
print("properties", props.title, "|", props.subject, "|", props.creator)
for ws in formulas.worksheets:
    cached = values[ws.title]
    for row in ws.iter_rows():
        for c in row:
            if c.value is None:
                continue
            shown = repr(c.value) if isinstance(c.value, float) else str(c.value)
            print(f"cell {ws.title}!{c.coordinate} {type(c.value).__name__} "
                  f"{shown.replace(chr(10), chr(92) + 'n')} | {c.number_format}")
            if c.data_type == "f":
                print(f"cached {ws.title}!{c.coordinate} {cached[c.coordinate].value!r}")
    for chart in ws._charts:
        s = chart.series[0]
        title = "".join(r.t for p in chart.title.tx.rich.p for r in (p.r or []))
        print(f"chart {ws.title} {type(chart).__name__} {chart.type} {len(chart.series)} "
              f"{s.cat.strRef.f} {s.val.numRef.f} {title}")
with zipfile.ZipFile(path) as z:
    for name in z.namelist():
        if name.startswith("xl/charts/"):
            print("part", name)
