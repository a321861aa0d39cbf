"""Reads an exported HTML page back: prints what the export test checks.

Well-formedness twice: as XML (every element closed, every entity known)
and through html.parser with a stack of open elements. Then the counts and
texts the test compares, and every reference that would reach outside.
"""
import sys
import xml.etree.ElementTree as ET
from html.parser import HTMLParser

VOID = {"meta", "br", "img", "input", "link", "hr", "rect"}


class Check(HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.stack, self.errors, self.outside = [], [], []

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("src", "href", "xlink:href", "action") or "url(" in (value or ""):
                self.outside.append(f"{tag} {name}={value}")
        if tag not in VOID:
            self.stack.append(tag)

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        if tag not in VOID:
            self.stack.pop()

    def handle_endtag(self, tag):
        if not self.stack or self.stack[-1] != tag:
            self.errors.append(f"</{tag}> closes {self.stack[-1] if self.stack else 'nothing'}")
        else:
            self.stack.pop()


raw = open(sys.argv[1], "rb").read()
text = raw.decode("utf-8")
check = Check()
check.feed(text)
check.close()
print("html-errors", len(check.errors) + len(check.stack), *check.errors, *check.stack)
print("outside", len(check.outside), *check.outside)
lower = text.lower()
print("http", lower.count("http"), "src=", lower.count("src="), "url(", lower.count("url("),
      "@import", lower.count("@import"), "<script", lower.count("<script"))

root = ET.fromstring(raw)
body = root.find("body")
print("title", root.find("head/title").text)
print("bars", len(body.findall(".//svg/rect")))
print("bar-labels", "|".join(t.text for t in body.findall(".//svg/text")))
summary = body.find(".//table[@class='summary']/tbody")
for tr in summary.findall("tr"):
    print("summary", "|".join("".join(td.itertext()) for td in tr.findall("td")))
records = body.find(".//table[@class='records']/tbody")
for tr in records.findall("tr"):
    print("record", "|".join("".join(td.itertext()).replace("\n", "\\n") for td in tr.findall("td")))
facts = body.find(".//dl")
print("facts", "|".join("".join(e.itertext()) for e in facts))
