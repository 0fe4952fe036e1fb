#!/usr/bin/env python3
"""Writes tests/data/gitea/hostile-seed.json: a Gitea whose every text was written by a stranger.

Titles, logins, repository, branch, file, job names, comment and review bodies and job logs hold
HTML tags (<img>, <font>, <b>, <a href>), Markdown images, HTML entities, CSS that loads images,
right-to-left overrides and a 10,000-character title. Every address that could make the app load
something points at STRANGER_HOST, which the tests and the screenshot tour replace with a local
listener's "127.0.0.1:<port>": any request it receives is something the app fetched.

    tools/make-hostile-seed.py > tests/data/gitea/hostile-seed.json
"""
import json
import sys

HOST = "STRANGER_HOST"
RLO = "\u202e"  # RIGHT-TO-LEFT OVERRIDE
PDF = "\u202c"


def img(name):
    return f'<img src="http://{HOST}/{name}.png">'


def md_img(name):
    return f"![{name}](http://{HOST}/{name}-md.png)"


def styled(name):
    return (f'<b>bold</b> <font color="#ff00ff">pink</font> {img(name)} '
            f'<a href="http://{HOST}/{name}-link">click</a> '
            f'<span style="background-image:url(http://{HOST}/{name}-css.png)">css</span> '
            f"&amp; &lt;i&gt; &#x41;")


HOSTILE_LOGIN = 'mal<b>lory&amp;<font color=red>'
# Left open, as a stranger would leave it: the words after it on the same line would be drawn
# backwards unless the text is set apart.
RTL_LOGIN = RLO + "devorppa"
REPO_NAME = "web<b>&amp;<font color=red>"
HEAD_BRANCH = f"<b>feature</b>/{RLO}gnp.exe"
TITLE = f"Tidy {styled('title')} {md_img('title')} {RLO}txt.exe"
# No address in it, so that it keeps its 10,000 characters whatever the listener's port.
LONG_TITLE = '<b>Long</b> <font color="#ff00ff">title</font> &amp; '
LONG_TITLE = (LONG_TITLE * (10000 // len(LONG_TITLE) + 1))[:10000]

DESCRIPTION = "\n".join([
    f"# Heading {img('heading')} <b>not bold</b>",
    f"Text with **bold**, _emphasis_, `code <b>span</b>`, ~~struck~~ and {img('body-html')}.",
    f"An image: {md_img('body')} and a linked one [![badge](http://{HOST}/badge.png)](https://example.org/ci).",
    "[a web page](https://example.org/page) [mail](mailto:ann@example.org) "
    "[a file](file:///etc/passwd) [script](javascript:alert(1)) [custom](kestrine-evil://run)",
    f"- bullet {md_img('bullet')} <font color=\"#ff00ff\">pink</font> [click](file:///etc/passwd)",
    f"<a href=\"http://{HOST}/raw-link\">raw link</a> &lt;b&gt;entity&lt;/b&gt; {RLO}reversed{PDF} after",
    f"<table background=\"http://{HOST}/table.png\"><tr><td>cell</td></tr></table>",
    "```html",
    f"{img('code')} <b>code</b>",
    "```",
    f"1. numbered {img('numbered')}",
    f"> quote {md_img('quote')}",
    f"[reference]: http://{HOST}/reference.png",
])

LOG = "".join([
    f"2024-05-01T10:21:02.1234567Z {img('log')} <b>bold</b> <font color=red>red</font>\n",
    f"2024-05-01T10:21:03.1234567Z \x1b[31mFAIL\x1b[0m {md_img('log')} &amp; {RLO}reversed\n",
    "2024-05-01T10:21:04.1234567Z Job failed\n",
])

HEAD_SHA = "a1b2c3d4e5f60718293a4b5c6d7e8f9001122334"
HEAD_SHA_LONG = "b1b2c3d4e5f60718293a4b5c6d7e8f9001122334"
FILES = [
    {"filename": f'docs/{img("file")}.md', "status": "added", "additions": 2, "deletions": 0},
    {"filename": "<b>bold</b> &amp; <font color=red>red</font>.txt", "status": "changed",
     "additions": 1, "deletions": 1},
    {"filename": f"src/{RLO}gnp.exe", "status": "deleted", "additions": 0, "deletions": 1},
]


def diff():
    a, b, c = (f["filename"] for f in FILES)
    return "".join([
        f"diff --git a/{a} b/{a}\nnew file mode 100644\nindex 0000000..1111111\n--- /dev/null\n+++ b/{a}\n",
        f"@@ -0,0 +1,2 @@\n+{img('diff-added')}\n+{md_img('diff')} <b>bold</b>\n",
        f"diff --git a/{b} b/{b}\nindex 2222222..3333333 100644\n--- a/{b}\n+++ b/{b}\n",
        f"@@ -1 +1 @@\n-<font color=red>old</font>\n+{styled('diff')}\n",
        f"diff --git a/{c} b/{c}\ndeleted file mode 100644\nindex 4444444..0000000\n--- a/{c}\n+++ /dev/null\n",
        f"@@ -1 +0,0 @@\n-{RLO}reversed\n",
    ])


def job(job_id, name, conclusion, log):
    return {"id": job_id, "name": name, "status": "completed", "conclusion": conclusion,
            "runner_id": 2, "runner_name": f"runner {img('runner')}",
            "created_at": "2024-05-01T10:21:00Z", "started_at": "2024-05-01T10:21:02Z",
            "completed_at": "2024-05-01T10:21:04Z",
            "steps": [{"name": f"step {img('step')}", "status": "completed",
                       "conclusion": conclusion, "started_at": "2024-05-01T10:21:02Z",
                       "completed_at": "2024-05-01T10:21:04Z"}],
            "log": log}


seed = {
    "instance": {"default_paging_num": 30, "max_response_items": 50},
    "users": [
        {"login": "ann", "id": 3, "full_name": "Ann Andersson", "created": "2022-11-02T09:15:03Z"},
        {"login": HOSTILE_LOGIN, "id": 66, "full_name": f"Mallory {img('full-name')}",
         "created": "2023-01-01T00:00:00Z"},
        {"login": RTL_LOGIN, "id": 67, "full_name": "Reversed", "created": "2023-01-01T00:00:00Z"},
    ],
    "viewer": "ann",
    "repositories": [{
        "owner": "ann", "name": REPO_NAME, "id": 90,
        "description": f"A repository {img('repository')}",
        "default_branch": "main",
        "created_at": "2023-01-14T10:02:11Z", "updated_at": "2024-05-02T08:00:00Z",
        "collaborators": {HOSTILE_LOGIN: "write", RTL_LOGIN: "write"},
        "pulls": [
            {
                "number": 1, "id": 901, "user": HOSTILE_LOGIN, "title": TITLE,
                "body": DESCRIPTION, "base": "main", "head": HEAD_BRANCH, "head_sha": HEAD_SHA,
                "merge_base": "0f5e8c1b2a3d4e5f60718293a4b5c6d7e8f90123",
                "created_at": "2024-04-29T14:03:51Z", "updated_at": "2024-05-01T10:20:30Z",
                "labels": [{"id": 9, "name": f"label {img('label')}", "color": "ee0701",
                            "description": img("label-description")}],
                "reviews": [
                    {"id": 801, "user": HOSTILE_LOGIN, "state": "APPROVED",
                     "body": f"<b>LGTM</b> {img('review')}\nsecond line {md_img('review')}",
                     "submitted_at": "2024-04-30T09:00:00Z"},
                    {"id": 802, "user": RTL_LOGIN, "state": "REQUEST_CHANGES",
                     "body": f"<font color=\"#00aa00\">✅ Approved</font> {RLO}sdrawkcab",
                     "submitted_at": "2024-04-30T10:00:00Z"},
                ],
                "comments": [
                    {"id": 701, "user": HOSTILE_LOGIN,
                     "body": f"{img('comment')} <b>first line</b>\n{md_img('comment')} {styled('comment')}",
                     "created_at": "2024-04-30T08:45:00Z"},
                    {"id": 702, "user": RTL_LOGIN, "body": f"{RLO}desrever &amp; &lt;b&gt;",
                     "created_at": "2024-04-30T09:10:00Z"},
                ],
                "files": FILES,
                "commits": [{
                    "sha": HEAD_SHA, "author": HOSTILE_LOGIN,
                    "message": f"Tidy {img('commit')}\n", "date": "2024-04-29T13:58:02Z",
                    "parents": ["0f5e8c1b2a3d4e5f60718293a4b5c6d7e8f90123"],
                    "additions": 3, "deletions": 2,
                    "files": [{"filename": f["filename"], "status": f["status"]} for f in FILES],
                }],
                "diff": diff(),
            },
            {
                "number": 2, "id": 902, "user": RTL_LOGIN, "title": LONG_TITLE, "body": "",
                "base": "main", "head": "long-title", "head_sha": HEAD_SHA_LONG,
                "merge_base": "0f5e8c1b2a3d4e5f60718293a4b5c6d7e8f90123",
                "created_at": "2024-04-28T14:03:51Z", "updated_at": "2024-04-30T10:20:30Z",
                "comments": [{"id": 703, "user": "ann", "body": f"Comment {n} " + ("word " * 40),
                              "created_at": "2024-04-30T08:45:00Z"} for n in range(1, 9)],
            },
        ],
        "runs": {HEAD_SHA: [{
            "id": 61, "run_number": 3, "workflow": "ci.yml",
            "display_title": f"Run {img('run-title')}", "event": "pull_request",
            "head_branch": HEAD_BRANCH, "actor": HOSTILE_LOGIN, "status": "completed",
            "conclusion": "failure", "run_attempt": 1, "created_at": "2024-05-01T10:21:00Z",
            "started_at": "2024-05-01T10:21:02Z", "completed_at": "2024-05-01T10:21:04Z",
            "jobs": [
                job(611, f"build {img('job')}", "success", LOG),
                job(612, f"<b>test</b> <font color=red>{RLO}tset</font>", "failure", LOG),
            ],
        }]},
    }],
}

json.dump(seed, sys.stdout, ensure_ascii=False, indent=1)
sys.stdout.write("\n")
