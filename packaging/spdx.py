"""The list of third parties in the form of SPDX 2.3 (JSON)."""
import json
import re
import time
import urllib.parse

RELATIONS = {"static": "STATIC_LINK", "beside": "CONTAINS", "system": "DYNAMIC_LINK"}


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def describe(part):
    """One package of the document."""
    version = urllib.parse.quote(part.version, safe="")
    package = {
        "SPDXID": identifier(f"{part.name}-{part.kind}"),
        "name": part.name,
        "versionInfo": part.version,
        "supplier": "Organization: Debian",
        "downloadLocation": f"http://deb.debian.org/debian/pool/main/{pool(part.name)}/{part.name}/",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": part.licence,
        "copyrightText": "NOASSERTION",
        "externalRefs": [
            {
                "referenceCategory": "PACKAGE-MANAGER",
                "referenceType": "purl",
                "referenceLocator": f"pkg:deb/debian/{part.name}@{version}?arch=source",
            }
        ],
    }
    if part.archive:
        package["packageFileName"] = part.archive
        package["checksums"] = [{"algorithm": "SHA256", "checksumValue": part.sha256}]
    return package


def pool(name):
    """The folder of Debian's archive that has a source package."""
    return name[:4] if name.startswith("lib") else name[0]


def document(name, facts, epoch, parts):
    """The text of the document of a package with these parts."""
    own = identifier(name)
    packages = [
        {
            "SPDXID": own,
            "name": name,
            "versionInfo": facts["version"],
            "supplier": "Organization: The Vorlund developers",
            "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False,
            "licenseConcluded": "MIT",
            "licenseDeclared": "MIT",
            "copyrightText": "Copyright (c) 2026 The Vorlund developers",
            "sourceInfo": f"revision {facts['revision'] or 'unknown'}",
        }
    ]
    relations = [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": own}]
    for part in parts:
        package = describe(part)
        packages.append(package)
        relations.append(
            {"spdxElementId": own, "relationshipType": RELATIONS[part.kind], "relatedSpdxElement": package["SPDXID"]}
        )
    whole = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"{name}-{facts['version']}-{facts['system']}-{facts['processor']}",
        "documentNamespace": f"https://vorlund.invalid/spdx/{name}-{facts['version']}-{facts['system']}-{facts['processor']}-{epoch}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(epoch)),
            "creators": ["Organization: The Vorlund developers", "Tool: packaging/complete.py"],
        },
        "packages": packages,
        "relationships": relations,
    }
    return json.dumps(whole, indent=1) + "\n"
