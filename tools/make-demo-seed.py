#!/usr/bin/env python3
"""Writes src/demo/demo-seed.json, the sample data of the built-in demo instance (`kestrine --demo`).

The diffs are computed from the before and after texts below, so that every file's additions and
deletions agree with its diff. Times are given relative to 2024-05-02T12:00:00Z; the demo instance
moves every time in the seed forward so that this moment is "now" when it starts.

    python3 tools/make-demo-seed.py > src/demo/demo-seed.json
"""
import difflib
import hashlib
import json
from datetime import datetime, timedelta, timezone

NOW = datetime(2024, 5, 2, 12, 0, 0, tzinfo=timezone.utc)
ESC = "\x1b"


def ago(minutes=0, hours=0, days=0, seconds=0):
    t = NOW - timedelta(minutes=minutes, hours=hours, days=days, seconds=seconds)
    return t.strftime("%Y-%m-%dT%H:%M:%SZ")


def sha(text):
    return hashlib.sha1(text.encode()).hexdigest()


def file_diff(path, old, new, status):
    """One file's section of a pull request diff, as `git diff` writes it, and its counts."""
    old_lines = old.splitlines(keepends=True) if old is not None else []
    new_lines = new.splitlines(keepends=True) if new is not None else []
    header = [f"diff --git a/{path} b/{path}\n"]
    if status == "added":
        header += ["new file mode 100644\n", f"index 0000000..{sha(new)[:7]}\n"]
        a, b = "/dev/null", f"b/{path}"
    elif status == "deleted":
        header += ["deleted file mode 100644\n", f"index {sha(old)[:7]}..0000000\n"]
        a, b = f"a/{path}", "/dev/null"
    else:
        header += [f"index {sha(old)[:7]}..{sha(new)[:7]} 100644\n"]
        a, b = f"a/{path}", f"b/{path}"
    body = list(difflib.unified_diff(old_lines, new_lines, a, b, n=3))
    # difflib writes "--- a/x\n" and "+++ b/x\n" with no tab when no dates are given.
    adds = sum(1 for l in body[2:] if l.startswith("+"))
    dels = sum(1 for l in body[2:] if l.startswith("-"))
    return "".join(header + body), adds, dels


def pull_files(changes):
    """(files entries, whole diff) for a list of (path, status, old, new)."""
    files, diff = [], ""
    for path, status, old, new in changes:
        section, adds, dels = file_diff(path, old, new, status)
        diff += section
        files.append({"filename": path, "status": status, "additions": adds, "deletions": dels})
    return files, diff


def log_lines(start_minutes_ago, lines):
    """A job log: one timestamped line per entry, 0.7 s apart."""
    t = NOW - timedelta(minutes=start_minutes_ago)
    out = []
    for i, line in enumerate(lines):
        stamp = (t + timedelta(milliseconds=700 * i)).strftime("%Y-%m-%dT%H:%M:%S.%f") + "0Z"
        out.append(f"{stamp} {line}")
    return "\n".join(out) + "\n"


def c(code, text):
    return f"{ESC}[{code}m{text}{ESC}[0m"


def job(jid, name, status, conclusion, minutes_ago, steps, log=None, runner="runner-amd64-1"):
    started = ago(minutes=minutes_ago)
    done = ago(minutes=minutes_ago - 2) if status == "completed" else None
    j = {
        "id": jid, "name": name, "labels": ["ubuntu-latest"], "status": status,
        "created_at": ago(minutes=minutes_ago + 1),
    }
    if status != "queued" and status != "waiting":
        j["started_at"] = started
        j["runner_id"] = 3
        j["runner_name"] = runner
    if status == "completed":
        j["conclusion"] = conclusion
        j["completed_at"] = done
        j["steps"] = [
            {"name": s, "status": "completed", "conclusion": conclusion if i == len(steps) - 1 else "success",
             "started_at": started, "completed_at": done}
            for i, s in enumerate(steps)
        ]
    if log is not None:
        j["log"] = log
    return j


def running_job(jid, name, minutes_ago, steps, steps_done, log):
    """A job a runner is executing: `steps_done` steps have passed, the next one is under way and
    the rest wait their turn."""
    started = ago(minutes=minutes_ago)
    step_list = []
    for i, step in enumerate(steps):
        at = ago(minutes=minutes_ago, seconds=-10 * i)
        if i < steps_done:
            step_list.append({"name": step, "status": "completed", "conclusion": "success",
                              "started_at": at, "completed_at": ago(minutes=minutes_ago, seconds=-10 * i - 9)})
        elif i == steps_done:
            step_list.append({"name": step, "status": "in_progress", "started_at": at})
        else:
            step_list.append({"name": step, "status": "queued"})
    return {
        "id": jid, "name": name, "labels": ["ubuntu-latest"], "status": "in_progress",
        "created_at": ago(minutes=minutes_ago + 1), "started_at": started,
        "runner_id": 3, "runner_name": "runner-amd64-1", "steps": step_list, "log": log,
    }


def created_together(r):
    """A run whose jobs were all created with it, as Gitea creates them."""
    for j in r["jobs"]:
        j["created_at"] = r["created_at"]
    return r


def run(rid, number, title, workflow, branch, actor, status, conclusion, minutes_ago, jobs):
    r = {
        "id": rid, "run_number": number, "workflow": workflow, "display_title": title,
        "event": "pull_request", "head_branch": branch, "actor": actor, "status": status,
        "run_attempt": 1, "created_at": ago(minutes=minutes_ago + 1), "jobs": jobs,
    }
    if status != "queued" and status != "waiting":
        r["started_at"] = ago(minutes=minutes_ago)
    if status == "completed":
        r["conclusion"] = conclusion
        r["completed_at"] = ago(minutes=minutes_ago - 3)
    return r


def go_setup(version="1.22.2"):
    return [
        "ubuntu-latest(version:v3.4.1) received task 9012 of job test, be triggered by event: pull_request",
        "workflow prepared",
        "evaluating expression 'success()'",
        "expression 'success()' evaluated to 'true'",
        "\U0001f680  Start image=docker.gitea.com/runner-images:ubuntu-latest",
        c("36", "::group::Run actions/checkout@v4"),
        "Syncing repository: norrum/harbor",
        "Fetching the repository",
        "[command]/usr/bin/git -c protocol.version=2 fetch --no-tags --prune --depth=1 origin",
        c("36", "::endgroup::"),
        c("36", "::group::Run actions/setup-go@v5"),
        f"Setup go version {version}",
        f"Found in cache @ /opt/hostedtoolcache/go/{version}/x64",
        c("36", "::endgroup::"),
    ]


# ---------------------------------------------------------------------------------------------
# harbor: a pull-through cache for container images, in Go

FETCHER_OLD = """package fetcher

import (
	"context"
	"fmt"
	"net/http"
)

// Fetcher downloads manifests and blobs from the upstream registry.
type Fetcher struct {
	Client   *http.Client
	Upstream string
}

// Get fetches one path from the upstream registry.
func (f *Fetcher) Get(ctx context.Context, path string) (*http.Response, error) {
	req, err := http.NewRequestWithContext(ctx, http.MethodGet, f.Upstream+path, nil)
	if err != nil {
		return nil, err
	}
	resp, err := f.Client.Do(req)
	if err != nil {
		return nil, fmt.Errorf("upstream %s: %w", path, err)
	}
	if resp.StatusCode >= 500 {
		resp.Body.Close()
		return nil, fmt.Errorf("upstream %s: %s", path, resp.Status)
	}
	return resp, nil
}
"""

FETCHER_NEW = """package fetcher

import (
	"context"
	"fmt"
	"net/http"
	"time"
)

// Fetcher downloads manifests and blobs from the upstream registry.
type Fetcher struct {
	Client   *http.Client
	Upstream string
	// Backoff decides how long to wait between attempts; nil means DefaultBackoff.
	Backoff *Backoff
}

// Get fetches one path from the upstream registry, retrying server errors and
// network failures with exponential backoff until the context ends.
func (f *Fetcher) Get(ctx context.Context, path string) (*http.Response, error) {
	backoff := f.Backoff
	if backoff == nil {
		backoff = DefaultBackoff()
	}
	for attempt := 0; ; attempt++ {
		resp, err := f.try(ctx, path)
		if err == nil {
			return resp, nil
		}
		wait, ok := backoff.Next(attempt)
		if !ok {
			return nil, err
		}
		select {
		case <-ctx.Done():
			return nil, ctx.Err()
		case <-time.After(wait):
		}
	}
}

func (f *Fetcher) try(ctx context.Context, path string) (*http.Response, error) {
	req, err := http.NewRequestWithContext(ctx, http.MethodGet, f.Upstream+path, nil)
	if err != nil {
		return nil, err
	}
	resp, err := f.Client.Do(req)
	if err != nil {
		return nil, fmt.Errorf("upstream %s: %w", path, err)
	}
	if resp.StatusCode >= 500 {
		resp.Body.Close()
		return nil, fmt.Errorf("upstream %s: %s", path, resp.Status)
	}
	return resp, nil
}
"""

BACKOFF_NEW = """package fetcher

import (
	"math/rand"
	"time"
)

// Backoff doubles the wait after every failed attempt, with jitter, and gives
// up once the total wait would exceed MaxElapsed.
type Backoff struct {
	Initial    time.Duration
	Max        time.Duration
	MaxElapsed time.Duration
	elapsed    time.Duration
}

// DefaultBackoff starts at 200 ms, caps single waits at 5 s and gives up after 30 s.
func DefaultBackoff() *Backoff {
	return &Backoff{Initial: 200 * time.Millisecond, Max: 5 * time.Second, MaxElapsed: 30 * time.Second}
}

// Next returns the wait before attempt+1, or false when it is time to give up.
func (b *Backoff) Next(attempt int) (time.Duration, bool) {
	wait := b.Initial << attempt
	if wait > b.Max || wait <= 0 {
		wait = b.Max
	}
	wait = wait/2 + time.Duration(rand.Int63n(int64(wait/2)+1))
	if b.elapsed+wait > b.MaxElapsed {
		return 0, false
	}
	b.elapsed += wait
	return wait, true
}
"""

FETCHER_TEST_OLD = """package fetcher

import (
	"context"
	"net/http"
	"net/http/httptest"
	"testing"
)

func TestGetReturnsUpstreamBody(t *testing.T) {
	srv := httptest.NewServer(http.HandlerFunc(func(w http.ResponseWriter, r *http.Request) {
		w.Write([]byte("manifest"))
	}))
	defer srv.Close()

	f := &Fetcher{Client: srv.Client(), Upstream: srv.URL}
	resp, err := f.Get(context.Background(), "/v2/library/alpine/manifests/3.19")
	if err != nil {
		t.Fatal(err)
	}
	resp.Body.Close()
}
"""

FETCHER_TEST_NEW = FETCHER_TEST_OLD + """
func TestGetRetriesServerErrors(t *testing.T) {
	calls := 0
	srv := httptest.NewServer(http.HandlerFunc(func(w http.ResponseWriter, r *http.Request) {
		calls++
		if calls < 3 {
			w.WriteHeader(http.StatusBadGateway)
			return
		}
		w.Write([]byte("manifest"))
	}))
	defer srv.Close()

	f := &Fetcher{Client: srv.Client(), Upstream: srv.URL,
		Backoff: &Backoff{Initial: time.Millisecond, Max: time.Millisecond, MaxElapsed: time.Second}}
	resp, err := f.Get(context.Background(), "/v2/library/alpine/manifests/3.19")
	if err != nil {
		t.Fatalf("Get after two 502s: %v", err)
	}
	resp.Body.Close()
	if calls != 3 {
		t.Errorf("calls = %d, want 3", calls)
	}
}
"""
FETCHER_TEST_NEW = FETCHER_TEST_NEW.replace('\t"testing"\n)', '\t"testing"\n\t"time"\n)')

CONFIG_DOC_OLD = """# Configuration

Harbor reads `harbor.yaml` from the working directory.

| key | default | meaning |
|---|---|---|
| `listen` | `:5000` | address to serve the registry API on |
| `upstream` | `https://registry-1.docker.io` | registry to pull through from |
| `storage` | `/var/lib/harbor` | where cached blobs live |

Unknown keys are an error.
"""

CONFIG_DOC_NEW = """# Configuration

Harbor reads `harbor.yaml` from the working directory.

| key | default | meaning |
|---|---|---|
| `listen` | `:5000` | address to serve the registry API on |
| `upstream` | `https://registry-1.docker.io` | registry to pull through from |
| `storage` | `/var/lib/harbor` | where cached blobs live |
| `retry.initial` | `200ms` | first wait after a failed upstream fetch |
| `retry.max_elapsed` | `30s` | give up after waiting this long in total |

Unknown keys are an error.

Failed upstream fetches (network errors and 5xx answers) are retried with
exponential backoff and jitter until `retry.max_elapsed` has passed.
"""

HANDLER_OLD = """package registry

import (
	"net/http"

	"norrum.com/harbor/fetcher"
)

// Handler serves the registry API from the upstream registry.
type Handler struct {
	Fetcher *fetcher.Fetcher
}

func (h *Handler) serveManifest(w http.ResponseWriter, r *http.Request, name, ref string) {
	resp, err := h.Fetcher.Get(r.Context(), "/v2/"+name+"/manifests/"+ref)
	if err != nil {
		http.Error(w, err.Error(), http.StatusBadGateway)
		return
	}
	defer resp.Body.Close()
	copyManifest(w, resp)
}
"""

HANDLER_NEW = """package registry

import (
	"net/http"

	"norrum.com/harbor/cache"
	"norrum.com/harbor/fetcher"
)

// Handler serves the registry API from the upstream registry.
type Handler struct {
	Fetcher   *fetcher.Fetcher
	Manifests *cache.Manifests
}

func (h *Handler) serveManifest(w http.ResponseWriter, r *http.Request, name, ref string) {
	if m, ok := h.Manifests.Get(name, ref); ok {
		writeManifest(w, m)
		return
	}
	resp, err := h.Fetcher.Get(r.Context(), "/v2/"+name+"/manifests/"+ref)
	if err != nil {
		http.Error(w, err.Error(), http.StatusBadGateway)
		return
	}
	defer resp.Body.Close()
	m := copyManifest(w, resp)
	h.Manifests.Put(name, ref, m)
}
"""

MANIFEST_CACHE = """package cache

import "sync"

// Manifest is one manifest as the upstream served it.
type Manifest struct {
	MediaType string
	Digest    string
	Body      []byte
}

// Manifests keeps manifests in memory, keyed by repository and reference.
type Manifests struct {
	mu    sync.RWMutex
	items map[string]Manifest
}

func NewManifests() *Manifests {
	return &Manifests{items: make(map[string]Manifest)}
}

func (c *Manifests) Get(name, ref string) (Manifest, bool) {
	c.mu.RLock()
	defer c.mu.RUnlock()
	m, ok := c.items[name+"@"+ref]
	return m, ok
}

func (c *Manifests) Put(name, ref string, m Manifest) {
	c.mu.Lock()
	defer c.mu.Unlock()
	c.items[name+"@"+ref] = m
}
"""

MANIFEST_CACHE_TEST = """package cache

import "testing"

func TestPutThenGet(t *testing.T) {
	c := NewManifests()
	c.Put("library/alpine", "3.19", Manifest{Digest: "sha256:c5b1"})
	m, ok := c.Get("library/alpine", "3.19")
	if !ok || m.Digest != "sha256:c5b1" {
		t.Fatalf("Get = %v, %v", m, ok)
	}
}

func TestTagsAreNotCachedForever(t *testing.T) {
	c := NewManifests()
	c.Put("library/alpine", "latest", Manifest{Digest: "sha256:old"})
	c.Expire("library/alpine", "latest")
	if _, ok := c.Get("library/alpine", "latest"); ok {
		t.Fatal("an expired tag is still served from the cache")
	}
}
"""

METRICS_NEW = """package metrics

import "github.com/prometheus/client_golang/prometheus"

var (
	CacheHits = prometheus.NewCounterVec(prometheus.CounterOpts{
		Namespace: "harbor",
		Name:      "cache_hits_total",
		Help:      "Requests answered from the local cache.",
	}, []string{"kind"})

	CacheMisses = prometheus.NewCounterVec(prometheus.CounterOpts{
		Namespace: "harbor",
		Name:      "cache_misses_total",
		Help:      "Requests that went to the upstream registry.",
	}, []string{"kind"})
)

func init() {
	prometheus.MustRegister(CacheHits, CacheMisses)
}
"""

MAIN_OLD = """package main

import (
	"log"
	"net/http"

	"norrum.com/harbor/config"
	"norrum.com/harbor/registry"
)

func main() {
	cfg, err := config.Load("harbor.yaml")
	if err != nil {
		log.Fatal(err)
	}
	h := registry.New(cfg)
	log.Printf("serving on %s", cfg.Listen)
	log.Fatal(http.ListenAndServe(cfg.Listen, h))
}
"""

MAIN_NEW = MAIN_OLD.replace('''	h := registry.New(cfg)
''', '''	h := registry.New(cfg)
	mux := http.NewServeMux()
	mux.Handle("/v2/", h)
	mux.Handle("/metrics", promhttp.Handler())
''').replace('http.ListenAndServe(cfg.Listen, h)', 'http.ListenAndServe(cfg.Listen, mux)').replace(
    '''	"net/http"

''', '''	"net/http"

	"github.com/prometheus/client_golang/prometheus/promhttp"
''')

harbor_142_files, harbor_142_diff = pull_files([
    ("docs/configuration.md", "changed", CONFIG_DOC_OLD, CONFIG_DOC_NEW),
    ("fetcher/backoff.go", "added", None, BACKOFF_NEW),
    ("fetcher/fetcher.go", "changed", FETCHER_OLD, FETCHER_NEW),
    ("fetcher/fetcher_test.go", "changed", FETCHER_TEST_OLD, FETCHER_TEST_NEW),
])

harbor_139_files, harbor_139_diff = pull_files([
    ("cache/manifest.go", "added", None, MANIFEST_CACHE),
    ("cache/manifest_test.go", "added", None, MANIFEST_CACHE_TEST),
    ("registry/handler.go", "changed", HANDLER_OLD, HANDLER_NEW),
])

harbor_145_files, harbor_145_diff = pull_files([
    ("cmd/harbor/main.go", "changed", MAIN_OLD, MAIN_NEW),
    ("metrics/metrics.go", "added", None, METRICS_NEW),
])

LEGACY_OLD = """package registry

// legacyAuth accepted the v1 token header that Docker dropped in 2019.
func legacyAuth(token string) bool {
	return token != ""
}
"""
harbor_137_files, harbor_137_diff = pull_files([
    ("registry/legacy.go", "deleted", LEGACY_OLD, None),
])

H142 = sha("harbor-142")
H139 = sha("harbor-139")
H145 = sha("harbor-145")
H137 = sha("harbor-137")
HMAIN = sha("harbor-main")

test_ok_log = log_lines(26, go_setup() + [
    c("36", "::group::Run go test -race ./..."),
    "[command]/opt/hostedtoolcache/go/1.22.2/x64/bin/go test -race ./...",
    c("32", "ok  ") + " \tnorrum.com/harbor/cache\t0.412s",
    c("32", "ok  ") + " \tnorrum.com/harbor/config\t0.031s",
    c("32", "ok  ") + " \tnorrum.com/harbor/fetcher\t1.207s",
    c("32", "ok  ") + " \tnorrum.com/harbor/registry\t0.655s",
    c("36", "::endgroup::"),
    c("32;1", "Job succeeded"),
])

lint_ok_log = log_lines(27, [
    "ubuntu-latest(version:v3.4.1) received task 9011 of job lint, be triggered by event: pull_request",
    "workflow prepared",
    c("36", "::group::Run golangci/golangci-lint-action@v6"),
    "Installed golangci-lint v1.57.2",
    "[command]/home/runner/golangci-lint run --out-format=github-actions",
    "level=info msg=\"[runner] linters took 4.1s with stages: goanalysis_metalinter: 3.9s\"",
    c("36", "::endgroup::"),
    c("32;1", "Job succeeded"),
])

build_ok_log = log_lines(25, go_setup() + [
    c("36", "::group::Run go build ./cmd/harbor"),
    "[command]/opt/hostedtoolcache/go/1.22.2/x64/bin/go build -trimpath -o dist/harbor ./cmd/harbor",
    c("36", "::endgroup::"),
    c("36", "::group::Run actions/upload-artifact@v4"),
    "With the provided path, there will be 1 file uploaded",
    "Artifact harbor-linux-amd64.zip successfully finalized. Artifact ID 4471",
    c("36", "::endgroup::"),
    c("32;1", "Job succeeded"),
])

test_fail_log = log_lines(190, go_setup() + [
    c("36", "::group::Run go test -race ./..."),
    "[command]/opt/hostedtoolcache/go/1.22.2/x64/bin/go test -race ./...",
    "=== RUN   TestPutThenGet",
    "--- PASS: TestPutThenGet (0.00s)",
    "=== RUN   TestTagsAreNotCachedForever",
    "    manifest_test.go:17: c.Expire undefined (type *Manifests has no field or method Expire)",
    c("31", "--- FAIL: TestTagsAreNotCachedForever (0.00s)"),
    c("31", "FAIL") + "\tnorrum.com/harbor/cache [build failed]",
    c("32", "ok  ") + " \tnorrum.com/harbor/config\t0.029s",
    c("32", "ok  ") + " \tnorrum.com/harbor/fetcher\t0.388s",
    c("32", "ok  ") + " \tnorrum.com/harbor/registry\t0.701s",
    c("31", "FAIL"),
    c("31;1", "::error::Process completed with exit code 1."),
    c("36", "::endgroup::"),
    c("31;1", "Job failed"),
])

# The lint job of the run still under way, done before the tests began.
lint_metrics_log = log_lines(6, [
    "ubuntu-latest(version:v3.4.1) received task 9040 of job lint, be triggered by event: pull_request",
    "workflow prepared",
    c("36", "::group::Run golangci/golangci-lint-action@v6"),
    "Installed golangci-lint v1.57.2",
    "[command]/home/runner/golangci-lint run --out-format=github-actions",
    "level=info msg=\"[runner] linters took 3.8s with stages: goanalysis_metalinter: 3.6s\"",
    c("36", "::endgroup::"),
    c("32;1", "Job succeeded"),
])

# A log still being written: the tests have started and nothing has ended the job yet.
test_running_log = log_lines(2, go_setup() + [
    c("36", "::group::Run go test -race ./..."),
    "[command]/opt/hostedtoolcache/go/1.22.2/x64/bin/go test -race ./...",
    c("32", "ok  ") + " \tnorrum.com/harbor/cache\t0.398s",
    c("32", "ok  ") + " \tnorrum.com/harbor/config\t0.030s",
])

harbor_runs = {
    H142: [
        run(512, 88, "Retry upstream fetches with exponential backoff", ".gitea/workflows/ci.yml",
            "retry-backoff", "erik", "completed", "success", 27, [
                job(1201, "lint", "completed", "success", 27,
                    ["Set up job", "actions/checkout@v4", "golangci-lint", "Complete job"], lint_ok_log),
                job(1202, "test (go 1.22)", "completed", "success", 26,
                    ["Set up job", "actions/checkout@v4", "actions/setup-go@v5", "go test -race ./...",
                     "Complete job"], test_ok_log),
                job(1203, "build", "completed", "success", 25,
                    ["Set up job", "actions/checkout@v4", "go build", "upload-artifact", "Complete job"],
                    build_ok_log),
            ]),
    ],
    H139: [
        run(505, 85, "Cache manifest lookups in memory", ".gitea/workflows/ci.yml", "manifest-cache",
            "tomas", "completed", "failure", 190, [
                job(1180, "lint", "completed", "success", 191,
                    ["Set up job", "actions/checkout@v4", "golangci-lint", "Complete job"], lint_ok_log),
                job(1181, "test (go 1.22)", "completed", "failure", 190,
                    ["Set up job", "actions/checkout@v4", "actions/setup-go@v5", "go test -race ./...",
                     "Complete job"], test_fail_log),
                job(1182, "build", "completed", "success", 189,
                    ["Set up job", "actions/checkout@v4", "go build", "Complete job"], build_ok_log),
            ]),
    ],
    # Under way: lint has passed, the tests are running, and the build waits for a free runner.
    H145: [
        created_together(run(515, 90, "WIP: Export Prometheus metrics for the cache", ".gitea/workflows/ci.yml",
            "cache-metrics", "noor", "in_progress", None, 7, [
                job(1210, "lint", "completed", "success", 6,
                    ["Set up job", "actions/checkout@v4", "golangci-lint", "Complete job"], lint_metrics_log),
                running_job(1211, "test (go 1.22)", 2,
                            ["Set up job", "actions/checkout@v4", "actions/setup-go@v5", "go test -race ./...",
                             "Complete job"], 3, test_running_log),
                job(1212, "build", "queued", None, 3, []),
            ])),
    ],
}

# ---------------------------------------------------------------------------------------------
# kestrel-web: the web front end, in TypeScript

RELDATE_OLD = """export function relativeDate(date: Date, now = new Date()): string {
  const days = Math.floor((now.getTime() - date.getTime()) / 86_400_000);
  if (days === 0) return "today";
  return `${days} days ago`;
}
"""
RELDATE_NEW = """const DAY = 86_400_000;

function startOfDay(d: Date): number {
  return new Date(d.getFullYear(), d.getMonth(), d.getDate()).getTime();
}

export function relativeDate(date: Date, now = new Date()): string {
  const days = Math.round((startOfDay(now) - startOfDay(date)) / DAY);
  if (days === 0) return "today";
  if (days === 1) return "yesterday";
  return `${days} days ago`;
}
"""
FEED_OLD = """import { relativeDate } from "../lib/dates";

export function FeedItem({ event }: { event: ActivityEvent }) {
  return (
    <li className="feed-item">
      <span className="who">{event.actor}</span> {event.summary}
      <time dateTime={event.at}>{relativeDate(new Date(event.at))}</time>
    </li>
  );
}
"""
FEED_NEW = FEED_OLD.replace('<time dateTime={event.at}>', '<time dateTime={event.at} title={event.at}>')

CSS_OLD = """.settings {
  background: #ffffff;
  color: #1b1f24;
}

.settings .row {
  border-bottom: 1px solid #e3e6ea;
}
"""
CSS_NEW = """.settings {
  background: var(--surface);
  color: var(--on-surface);
}

.settings .row {
  border-bottom: 1px solid var(--divider);
}

@media (prefers-color-scheme: dark) {
  :root {
    --surface: #16181c;
    --on-surface: #e6e8eb;
    --divider: #2b2f36;
  }
}
"""
THEME_NEW = """:root {
  --surface: #ffffff;
  --on-surface: #1b1f24;
  --divider: #e3e6ea;
}
"""
web_61_files, web_61_diff = pull_files([
    ("src/components/FeedItem.tsx", "changed", FEED_OLD, FEED_NEW),
    ("src/lib/dates.ts", "changed", RELDATE_OLD, RELDATE_NEW),
])
web_58_files, web_58_diff = pull_files([
    ("src/styles/settings.css", "changed", CSS_OLD, CSS_NEW),
    ("src/styles/theme.css", "added", None, THEME_NEW),
])
W61 = sha("web-61")
W58 = sha("web-58")

# The translations pulled from Weblate: eleven languages updated and Ukrainian added, three
# namespaces each, so that the pull request has more changed files than one page of the API holds.
# Each language: (its name, its translator's Weblate login, {namespace: the strings after the sync},
# {(namespace, key): what a string read before, where it changed}, or None for a new language). The
# last key of each namespace is new in this sync.
LOCALE_KEYS = {
    "activity": ["title", "empty", "today", "yesterday"],
    "common": ["cancel", "save", "loading", "retry"],
    "settings": ["title", "language", "notifications", "appearance"],
}
TRANSLATIONS = {
    "de": ("German", "jonas.weber", {
        "activity": ["Aktivität", "Noch ist nichts passiert.", "heute", "gestern"],
        "common": ["Abbrechen", "Speichern", "Wird geladen…", "Erneut versuchen"],
        "settings": ["Einstellungen", "Sprache", "Benachrichtigungen", "Darstellung"],
    }, {("common", "loading"): "Lade…"}),
    "es": ("Spanish", "lucia.romero", {
        "activity": ["Actividad", "Todavía no ha pasado nada.", "hoy", "ayer"],
        "common": ["Cancelar", "Guardar", "Cargando…", "Reintentar"],
        "settings": ["Ajustes", "Idioma", "Notificaciones", "Apariencia"],
    }, {}),
    "fr": ("French", "camille.durand", {
        "activity": ["Activité", "Rien ne s’est encore passé.", "aujourd’hui", "hier"],
        "common": ["Annuler", "Enregistrer", "Chargement…", "Réessayer"],
        "settings": ["Paramètres", "Langue", "Notifications", "Apparence"],
    }, {("activity", "empty"): "Rien ne s'est encore passé.", ("activity", "today"): "aujourd'hui"}),
    "it": ("Italian", "giulia.ricci", {
        "activity": ["Attività", "Non è ancora successo nulla.", "oggi", "ieri"],
        "common": ["Annulla", "Salva", "Caricamento…", "Riprova"],
        "settings": ["Impostazioni", "Lingua", "Notifiche", "Aspetto"],
    }, {}),
    "ja": ("Japanese", "haruto.sato", {
        "activity": ["アクティビティ", "まだ何もありません。", "今日", "昨日"],
        "common": ["キャンセル", "保存", "読み込み中…", "再試行"],
        "settings": ["設定", "言語", "通知", "外観"],
    }, {}),
    "nb": ("Norwegian Bokmål", "ingrid.berg", {
        "activity": ["Aktivitet", "Ingenting har skjedd ennå.", "i dag", "i går"],
        "common": ["Avbryt", "Lagre", "Laster inn…", "Prøv igjen"],
        "settings": ["Innstillinger", "Språk", "Varsler", "Utseende"],
    }, {}),
    "nl": ("Dutch", "sanne.devries", {
        "activity": ["Activiteit", "Er is nog niets gebeurd.", "vandaag", "gisteren"],
        "common": ["Annuleren", "Opslaan", "Laden…", "Opnieuw proberen"],
        "settings": ["Instellingen", "Taal", "Meldingen", "Weergave"],
    }, {}),
    "pl": ("Polish", "kasia.nowak", {
        "activity": ["Aktywność", "Jeszcze nic się nie wydarzyło.", "dzisiaj", "wczoraj"],
        "common": ["Anuluj", "Zapisz", "Ładowanie…", "Spróbuj ponownie"],
        "settings": ["Ustawienia", "Język", "Powiadomienia", "Wygląd"],
    }, {}),
    "pt-BR": ("Portuguese (Brazil)", "rafael.souza", {
        "activity": ["Atividade", "Nada aconteceu ainda.", "hoje", "ontem"],
        "common": ["Cancelar", "Salvar", "Carregando…", "Tentar novamente"],
        "settings": ["Configurações", "Idioma", "Notificações", "Aparência"],
    }, {}),
    "sv": ("Swedish", "elsa.nystrom", {
        "activity": ["Aktivitet", "Inget har hänt än.", "i dag", "i går"],
        "common": ["Avbryt", "Spara", "Läser in…", "Försök igen"],
        "settings": ["Inställningar", "Språk", "Aviseringar", "Utseende"],
    }, {("settings", "notifications"): "Notifikationer"}),
    "uk": ("Ukrainian", "olena.kovalenko", {
        "activity": ["Активність", "Поки що нічого не сталося.", "сьогодні", "вчора"],
        "common": ["Скасувати", "Зберегти", "Завантаження…", "Спробувати ще раз"],
        "settings": ["Налаштування", "Мова", "Сповіщення", "Вигляд"],
    }, None),  # new: no files before
    "zh-Hans": ("Chinese (Simplified)", "li.wei", {
        "activity": ["动态", "还没有任何动态。", "今天", "昨天"],
        "common": ["取消", "保存", "加载中…", "重试"],
        "settings": ["设置", "语言", "通知", "外观"],
    }, {}),
}


TRANSLATORS = {
    "jonas.weber": "Jonas Weber", "lucia.romero": "Lucía Romero", "camille.durand": "Camille Durand",
    "giulia.ricci": "Giulia Ricci", "haruto.sato": "Haruto Sato", "ingrid.berg": "Ingrid Berg",
    "sanne.devries": "Sanne de Vries", "kasia.nowak": "Kasia Nowak", "rafael.souza": "Rafael Souza",
    "elsa.nystrom": "Elsa Nyström", "olena.kovalenko": "Olena Kovalenko", "li.wei": "Li Wei",
}


def locale_json(namespace, strings):
    return json.dumps(dict(zip(LOCALE_KEYS[namespace], strings)), ensure_ascii=False, indent=2) + "\n"


I18N_OLD = """import i18n from "i18next";
import HttpBackend from "i18next-http-backend";
import LanguageDetector from "i18next-browser-languagedetector";
import { initReactI18next } from "react-i18next";

// Every language with a complete translation in public/locales.
export const supportedLanguages = [
  "de",
  "en",
  "es",
  "fr",
  "it",
  "ja",
  "nb",
  "nl",
  "pl",
  "pt-BR",
  "sv",
  "zh-Hans",
] as const;

i18n
  .use(HttpBackend)
  .use(LanguageDetector)
  .use(initReactI18next)
  .init({
    fallbackLng: "en",
    supportedLngs: supportedLanguages,
    ns: ["common", "activity", "settings"],
    defaultNS: "common",
    interpolation: { escapeValue: false },
  });

export default i18n;
"""
I18N_NEW = I18N_OLD.replace('  "sv",\n', '  "sv",\n  "uk",\n')

web_64_changes = []
for lang in sorted(TRANSLATIONS):
    _, _, new_strings, fixes = TRANSLATIONS[lang]
    for namespace in sorted(LOCALE_KEYS):
        path = f"public/locales/{lang}/{namespace}.json"
        after = locale_json(namespace, new_strings[namespace])
        if fixes is None:
            web_64_changes.append((path, "added", None, after))
            continue
        # Before the sync the last key was not there yet, and a few strings read otherwise.
        old_strings = [fixes.get((namespace, key), text)
                       for key, text in zip(LOCALE_KEYS[namespace], new_strings[namespace])][:-1]
        before = json.dumps(dict(zip(LOCALE_KEYS[namespace], old_strings)), ensure_ascii=False, indent=2) + "\n"
        web_64_changes.append((path, "changed", before, after))
web_64_changes.append(("src/i18n.ts", "changed", I18N_OLD, I18N_NEW))
web_64_files, web_64_diff = pull_files(web_64_changes)
W64 = sha("web-64")

web_runs = {
    W64: [
        run(508, 235, "Add Ukrainian and update translations from Weblate", ".gitea/workflows/test.yml",
            "weblate-sync", "lina", "completed", "success", 72, [
                job(1160, "unit", "completed", "success", 72,
                    ["Set up job", "actions/checkout@v4", "npm ci", "npm test", "Complete job"],
                    log_lines(72, [
                        "ubuntu-latest(version:v3.4.1) received task 8931 of job unit, be triggered by event: pull_request",
                        c("36", "::group::Run npm test"),
                        "> kestrel-web@2.3.0 test",
                        "> vitest run",
                        c("32", " \u2713") + " src/lib/dates.test.ts (6 tests) 13ms",
                        c("32", " \u2713") + " src/i18n.test.ts (13 tests) 41ms",
                        c("32", " \u2713") + " src/components/Settings.test.tsx (11 tests) 198ms",
                        " Test Files  " + c("32;1", "3 passed") + " (3)",
                        "      Tests  " + c("32;1", "30 passed") + " (30)",
                        c("36", "::endgroup::"),
                        c("32;1", "Job succeeded"),
                    ])),
                job(1161, "e2e (chromium)", "completed", "success", 71,
                    ["Set up job", "actions/checkout@v4", "playwright test", "Complete job"],
                    log_lines(71, [
                        c("36", "::group::Run npx playwright test --project=chromium"),
                        "Running 24 tests using 2 workers",
                        c("32", "  24 passed") + " (37.9s)",
                        c("36", "::endgroup::"),
                        c("32;1", "Job succeeded"),
                    ])),
            ]),
    ],
    W61: [
        run(498, 233, "Fix relative dates in the activity feed", ".gitea/workflows/test.yml",
            "relative-dates", "lina", "completed", "cancelled", 1500, [
                job(1150, "unit", "completed", "cancelled", 1500,
                    ["Set up job", "actions/checkout@v4", "npm ci", "npm test", "Complete job"],
                    log_lines(1500, [
                        "ubuntu-latest(version:v3.4.1) received task 8870 of job unit, be triggered by event: pull_request",
                        c("36", "::group::Run npm ci"),
                        "added 812 packages, and audited 813 packages in 21s",
                        c("36", "::endgroup::"),
                        c("36", "::group::Run npm test"),
                        "> kestrel-web@2.3.0 test",
                        "> vitest run",
                        c("33", "The operation was canceled."),
                        c("33;1", "Job cancelled"),
                    ])),
            ]),
    ],
    W58: [
        run(490, 229, "Dark mode for the settings page", ".gitea/workflows/test.yml", "settings-dark",
            "noor", "completed", "success", 2900, [
                job(1130, "unit", "completed", "success", 2900,
                    ["Set up job", "actions/checkout@v4", "npm ci", "npm test", "Complete job"],
                    log_lines(2900, [
                        "ubuntu-latest(version:v3.4.1) received task 8790 of job unit, be triggered by event: pull_request",
                        c("36", "::group::Run npm test"),
                        "> kestrel-web@2.3.0 test",
                        "> vitest run",
                        c("32", " \u2713") + " src/lib/dates.test.ts (6 tests) 14ms",
                        c("32", " \u2713") + " src/components/Settings.test.tsx (11 tests) 203ms",
                        " Test Files  " + c("32;1", "2 passed") + " (2)",
                        "      Tests  " + c("32;1", "17 passed") + " (17)",
                        c("36", "::endgroup::"),
                        c("32;1", "Job succeeded"),
                    ])),
                job(1131, "e2e (chromium)", "completed", "success", 2899,
                    ["Set up job", "actions/checkout@v4", "playwright test", "Complete job"],
                    log_lines(2899, [
                        c("36", "::group::Run npx playwright test --project=chromium"),
                        "Running 24 tests using 2 workers",
                        c("32", "  24 passed") + " (38.2s)",
                        c("36", "::endgroup::"),
                        c("32;1", "Job succeeded"),
                    ])),
            ]),
    ],
}

# ---------------------------------------------------------------------------------------------
# infra: Ansible for the build runners

RUNNER_OLD = """- name: Register the runner
  ansible.builtin.command:
    cmd: >
      act_runner register --no-interactive
      --instance https://git.norrum.com
      --token {{ runner_token }}
      --name {{ inventory_hostname }}
  args:
    creates: /var/lib/act_runner/.runner
"""
RUNNER_NEW = """- name: Register the runner
  ansible.builtin.command:
    cmd: >
      act_runner register --no-interactive
      --instance https://git.norrum.com
      --token {{ vault_runner_token }}
      --name {{ inventory_hostname }}
      --labels ubuntu-latest:docker://docker.gitea.com/runner-images:ubuntu-latest
  args:
    creates: /var/lib/act_runner/.runner
  no_log: true
"""
VARS_OLD = """runner_token: "AAAAB3NzaC1yc2EAAAADAQABAAABAQ"
runner_count: 2
"""
VARS_NEW = """runner_count: 3
"""
infra_files, infra_diff = pull_files([
    ("group_vars/runners.yml", "changed", VARS_OLD, VARS_NEW),
    ("roles/runner/tasks/register.yml", "changed", RUNNER_OLD, RUNNER_NEW),
])
I23 = sha("infra-23")
infra_runs = {
    I23: [
        run(470, 61, "Rotate the runner registration token", ".gitea/workflows/lint.yml",
            "rotate-runner-token", "maja", "completed", "success", 300, [
                job(1100, "ansible-lint", "completed", "success", 300,
                    ["Set up job", "actions/checkout@v4", "ansible-lint", "Complete job"],
                    log_lines(300, [
                        c("36", "::group::Run ansible-lint"),
                        "Passed: 0 failure(s), 0 warning(s) on 42 files. Profile 'production' was required.",
                        c("36", "::endgroup::"),
                        c("32;1", "Job succeeded"),
                    ])),
            ]),
    ],
}

# ---------------------------------------------------------------------------------------------
# docs and dotfiles

RELEASE_DOC = """# Release checklist

1. Freeze `main` in the team channel.
2. Run `make release-notes` and edit the draft.
3. Tag the release: `git tag -s vX.Y.Z`.
4. Watch the release workflow until the images are pushed.
5. Announce it.
"""
docs_files, docs_diff = pull_files([
    ("docs/releasing.md", "added", None, RELEASE_DOC),
])
D17 = sha("docs-17")

PROMPT_OLD = """PS1='\\u@\\h:\\w\\$ '
export EDITOR=vim
"""
PROMPT_NEW = """export EDITOR=hx
eval "$(starship init bash)"
"""
dot_files, dot_diff = pull_files([
    (".bashrc", "changed", PROMPT_OLD, PROMPT_NEW),
    (".config/starship.toml", "added", None, "add_newline = false\n\n[git_status]\ndisabled = false\n"),
])
DOT4 = sha("dotfiles-4")


def commit(sha_, author, message, minutes_ago, files, parent):
    return {"sha": sha_, "author": author, "message": message + "\n", "date": ago(minutes=minutes_ago),
            "parents": [parent], "additions": sum(f["additions"] for f in files),
            "deletions": sum(f["deletions"] for f in files),
            "files": [{"filename": f["filename"], "status": f["status"]} for f in files]}


def weblate_commits():
    """One commit per language from Weblate (its translator as the author), then Lina's, which
    turns Ukrainian on; oldest first, the last one the head."""
    commits, parent = [], sha("web-main")
    for i, lang in enumerate(sorted(TRANSLATIONS)):
        name, translator, _, fixes = TRANSLATIONS[lang]
        files = [f for f in web_64_files if f["filename"].startswith(f"public/locales/{lang}/")]
        this = sha(f"web-64-{lang}")
        commits.append({
            "sha": this, "author": TRANSLATORS[translator],
            "author_email": f"{translator}@users.noreply.hosted.weblate.org",
            "message": f"Translated using Weblate ({name})\n\n"
                       f"Currently translated at 100.0% (12 of 12 strings)\n",
            "date": ago(hours=30 - 2 * i), "parents": [parent],
            "additions": sum(f["additions"] for f in files), "deletions": sum(f["deletions"] for f in files),
            "files": [{"filename": f["filename"], "status": f["status"]} for f in files]})
        parent = this
    i18n = [f for f in web_64_files if f["filename"] == "src/i18n.ts"]
    commits.append(commit(W64, "lina", "Offer Ukrainian in the language menu", 75, i18n, parent))
    return commits


seed = {
    "instance": {"default_paging_num": 30, "max_response_items": 50},
    "users": [
        {"id": 1, "login": "maja", "full_name": "Maja Lind", "email": "maja@norrum.com", "is_admin": True,
         "created": "2021-03-04T09:00:00Z", "last_login": ago(minutes=5)},
        {"id": 2, "login": "norrum", "full_name": "Norrum", "email": "dev@norrum.com",
         "created": "2021-03-04T09:05:00Z"},
        {"id": 3, "login": "erik", "full_name": "Erik Holm", "email": "erik@norrum.com",
         "created": "2021-05-10T08:00:00Z", "last_login": ago(minutes=30)},
        {"id": 4, "login": "lina", "full_name": "Lina Sund", "email": "lina@norrum.com",
         "created": "2022-01-17T08:00:00Z", "last_login": ago(hours=2)},
        {"id": 5, "login": "tomas", "full_name": "Tomas Berg", "email": "tomas@norrum.com",
         "created": "2022-09-01T08:00:00Z", "last_login": ago(hours=3)},
        {"id": 6, "login": "noor", "full_name": "Noor Haddad", "email": "noor@norrum.com",
         "created": "2023-02-20T08:00:00Z", "last_login": ago(minutes=8)},
    ],
    "tokens": {"6b656e7472696e652d64656d6f2d746f6b656e21": "maja"},
    "viewer": "maja",
    "repositories": [
        {
            "id": 21, "owner": "norrum", "name": "harbor",
            "description": "A pull-through cache for container images", "language": "Go",
            "size": 8120, "stars_count": 41, "forks_count": 6, "watchers_count": 9,
            "created_at": "2022-02-11T10:00:00Z", "updated_at": ago(minutes=8),
            "collaborators": {"maja": "admin", "erik": "write", "lina": "write", "tomas": "write", "noor": "write"},
            "merge_styles": ["merge", "rebase", "squash"],
            "branches": [{"name": "main", "commit": HMAIN, "protected": True}],
            "pulls": [
                {
                    "id": 9142, "number": 142, "user": "erik",
                    "title": "Retry upstream fetches with exponential backoff",
                    "body": "## Why\n\nDocker Hub answers **502** for a few seconds every now and then, and every"
                            " pull through the cache fails with it. This retries server errors and network"
                            " failures with exponential backoff and jitter.\n\n## What changes\n\n"
                            "- new `fetcher.Backoff`: 200 ms, doubling, at most 5 s per wait\n"
                            "- gives up after `retry.max_elapsed` (30 s by default)\n"
                            "- `Get` honours the request context, so a client that hangs up stops the retries\n\n"
                            "```yaml\nretry:\n  initial: 200ms\n  max_elapsed: 30s\n```\n\n"
                            "Closes #131. See the [Docker Hub status page](https://www.dockerstatus.com) for the outages.",
                    "base": "main", "head": "retry-backoff", "head_sha": H142, "merge_base": HMAIN,
                    "created_at": ago(days=1, hours=4), "updated_at": ago(minutes=25),
                    "labels": [{"id": 1, "name": "enhancement", "color": "84b6eb"}],
                    "assignees": ["erik"], "requested_reviewers": ["tomas"],
                    "reviews": [
                        {"id": 7001, "user": "lina", "state": "APPROVED",
                         "body": "Small and easy to follow. The jitter keeps us from stampeding the upstream after an outage.",
                         "commit_id": H142, "official": True, "submitted_at": ago(minutes=40)},
                    ],
                    "comments": [
                        {"id": 8001, "user": "maja",
                         "body": "Do we cap the total wait? A pull that hangs for minutes is worse than a fast failure.",
                         "created_at": ago(hours=20)},
                        {"id": 8002, "user": "erik",
                         "body": "Yes: `MaxElapsed` defaults to 30 s, and the request context still wins. Documented it in `docs/configuration.md`.",
                         "created_at": ago(hours=19, minutes=30)},
                        {"id": 8003, "user": "tomas", "body": "\U0001f44d from me once CI is green.",
                         "created_at": ago(minutes=30)},
                    ],
                    "files": harbor_142_files,
                    "commits": [commit(H142, "erik", "Retry upstream fetches with backoff", 60 * 20, harbor_142_files, HMAIN)],
                    "diff": harbor_142_diff,
                },
                {
                    "id": 9139, "number": 139, "user": "tomas",
                    "title": "Cache manifest lookups in memory",
                    "body": "Every `GET /v2/<name>/manifests/<ref>` goes upstream today, even for digests that can"
                            " never change. This keeps manifests in a map.\n\n"
                            "- digests are cached for good\n- tags are cached too (see the open question)\n\n"
                            "### Open question\n\nShould tags expire? `latest` moves.",
                    "base": "main", "head": "manifest-cache", "head_sha": H139, "merge_base": HMAIN,
                    "created_at": ago(days=2), "updated_at": ago(hours=3),
                    "labels": [{"id": 2, "name": "performance", "color": "fbca04"}],
                    "reviews": [
                        {"id": 7002, "user": "lina", "state": "REQUEST_CHANGES",
                         "body": "The map never shrinks, and tags are served stale forever. Please bound it (an LRU is fine) and expire tags.",
                         "commit_id": H139, "official": True, "submitted_at": ago(hours=2, minutes=40)},
                        {"id": 7003, "user": "erik", "state": "COMMENT",
                         "body": "+1 to an LRU. `hashicorp/golang-lru/v2` is already in go.sum.",
                         "commit_id": H139, "submitted_at": ago(hours=2, minutes=10)},
                    ],
                    "comments": [
                        {"id": 8010, "user": "tomas",
                         "body": "I added a test for tag expiry first; it fails until `Expire` exists.",
                         "created_at": ago(hours=3)},
                    ],
                    "files": harbor_139_files,
                    "commits": [commit(H139, "tomas", "Cache manifests in memory", 200, harbor_139_files, HMAIN)],
                    "diff": harbor_139_diff,
                },
                {
                    "id": 9145, "number": 145, "user": "noor",
                    "title": "WIP: Export Prometheus metrics for the cache",
                    "body": "Early draft, not ready for review.\n\n- [x] hit and miss counters\n- [ ] bytes served\n- [ ] dashboard",
                    "base": "main", "head": "cache-metrics", "head_sha": H145, "merge_base": HMAIN,
                    "created_at": ago(hours=1), "updated_at": ago(minutes=8),
                    "files": harbor_145_files,
                    "commits": [commit(H145, "noor", "Count cache hits and misses", 10, harbor_145_files, HMAIN)],
                    "diff": harbor_145_diff,
                },
                {
                    "id": 9137, "number": 137, "user": "erik",
                    "title": "Remove the legacy v1 token check",
                    "body": "Nothing has sent the v1 header since 2019.",
                    "base": "main", "head": "drop-legacy-auth", "head_sha": H137, "merge_base": HMAIN,
                    "state": "closed", "merged": True, "merged_by": "maja",
                    "merged_at": ago(days=3), "closed_at": ago(days=3), "merge_commit_sha": HMAIN,
                    "created_at": ago(days=4), "updated_at": ago(days=3),
                    "reviews": [{"id": 7004, "user": "maja", "state": "APPROVED", "body": "",
                                 "commit_id": H137, "submitted_at": ago(days=3, hours=1)}],
                    "files": harbor_137_files,
                    "commits": [commit(H137, "erik", "Remove legacy auth", 60 * 24 * 4, harbor_137_files, HMAIN)],
                    "diff": harbor_137_diff,
                },
            ],
            "runs": harbor_runs,
            # Beside Actions, a coverage service reports on the same head commit.
            "statuses": {
                H142: [
                    {"context": "coverage/codecov", "status": "success", "creator": "erik",
                     "description": "84.2% (+0.6%) compared to main",
                     "target_url": "https://codecov.norrum.example/gh/norrum/harbor/pull/142",
                     "created_at": ago(minutes=38)},
                ],
            },
        },
        {
            "id": 22, "owner": "norrum", "name": "kestrel-web",
            "description": "The web front end", "language": "TypeScript", "size": 15400,
            "created_at": "2022-06-01T10:00:00Z", "updated_at": ago(days=1),
            "collaborators": {"maja": "admin", "lina": "write", "noor": "write", "erik": "read"},
            "merge_styles": ["merge", "squash"],
            "pulls": [
                {
                    "id": 9061, "number": 61, "user": "lina",
                    "title": "Fix relative dates in the activity feed",
                    "body": "Events from late yesterday evening showed as *today*. Dates are now compared by"
                            " calendar day, and the full timestamp shows on hover.",
                    "head": "relative-dates", "head_sha": W61,
                    "created_at": ago(days=1, hours=2), "updated_at": ago(days=1),
                    "labels": [{"id": 5, "name": "bug", "color": "ee0701"}],
                    "reviews": [
                        {"id": 7010, "user": "erik", "state": "COMMENT",
                         "body": "Looks right. Could you add a test for the *yesterday* case around midnight?",
                         "commit_id": W61, "submitted_at": ago(hours=23)},
                    ],
                    "files": web_61_files,
                    "commits": [commit(W61, "lina", "Compare dates by calendar day", 60 * 26, web_61_files, HMAIN)],
                    "diff": web_61_diff,
                },
                {
                    "id": 9064, "number": 64, "user": "lina",
                    "title": "Add Ukrainian and update translations from Weblate",
                    "body": "Brings in what the translators did on Weblate since 2.3.0, and adds Ukrainian,"
                            " which Olena finished last week.\n\n"
                            "- the new strings (*yesterday*, *Appearance*, *Try again*) in all eleven languages\n"
                            "- Ukrainian complete, and offered in the language menu (`src/i18n.ts`)\n"
                            "- fixes: German *Wird geladen…*, French apostrophes, Swedish *Aviseringar*\n\n"
                            "Nothing but JSON apart from one line in `src/i18n.ts`.",
                    "head": "weblate-sync", "head_sha": W64,
                    "created_at": ago(hours=3), "updated_at": ago(hours=1, minutes=10),
                    "labels": [{"id": 6, "name": "i18n", "color": "c5def5"}],
                    "requested_reviewers": ["maja"],
                    "reviews": [
                        {"id": 7012, "user": "noor", "state": "APPROVED",
                         "body": "Spot-checked German, Swedish and Ukrainian against the screens. \U0001f44d",
                         "commit_id": W64, "official": True, "submitted_at": ago(hours=1)},
                    ],
                    "comments": [
                        {"id": 8020, "user": "noor",
                         "body": "Japanese *再試行* is wider than the retry button on phones. That is the"
                                 " button's fault, not the translation's; I'll fix the CSS separately.",
                         "created_at": ago(hours=1, minutes=5)},
                    ],
                    "files": web_64_files,
                    "commits": weblate_commits(),
                    "diff": web_64_diff,
                },
                {
                    "id": 9058, "number": 58, "user": "noor",
                    "title": "Dark mode for the settings page",
                    "body": "Moves the settings colours to CSS variables and adds a dark palette behind"
                            " `prefers-color-scheme`.",
                    "head": "settings-dark", "head_sha": W58,
                    "created_at": ago(days=3), "updated_at": ago(days=2),
                    "files": web_58_files,
                    "commits": [commit(W58, "noor", "Settings: dark palette", 60 * 50, web_58_files, HMAIN)],
                    "diff": web_58_diff,
                },
            ],
            "runs": web_runs,
        },
        {
            "id": 23, "owner": "norrum", "name": "infra",
            "description": "Ansible for the build runners and the Gitea host", "language": "YAML",
            "private": True, "created_at": "2021-04-01T10:00:00Z", "updated_at": ago(hours=5),
            "collaborators": {"maja": "admin", "erik": "write"},
            "pulls": [
                {
                    "id": 9023, "number": 23, "user": "maja",
                    "title": "Rotate the runner registration token",
                    "body": "The old token sat in plain text in `group_vars`. It now comes from the vault,"
                            " and the task no longer logs it.\n\n- moves the token to `vault_runner_token`\n"
                            "- adds a third runner\n- `no_log: true` on the register task",
                    "head": "rotate-runner-token", "head_sha": I23,
                    "created_at": ago(hours=7), "updated_at": ago(hours=5),
                    "reviews": [
                        {"id": 7020, "user": "erik", "state": "APPROVED", "body": "Thanks for catching this.",
                         "commit_id": I23, "submitted_at": ago(hours=5)},
                    ],
                    "files": infra_files,
                    "commits": [commit(I23, "maja", "Take the runner token from the vault", 60 * 6, infra_files, HMAIN)],
                    "diff": infra_diff,
                },
            ],
            "runs": infra_runs,
        },
        {
            "id": 24, "owner": "norrum", "name": "docs",
            "description": "Team handbook", "language": "Markdown",
            "created_at": "2021-04-02T10:00:00Z", "updated_at": ago(days=4),
            "collaborators": {"maja": "admin", "tomas": "write"},
            "pulls": [
                {
                    "id": 9017, "number": 17, "user": "tomas",
                    "title": "Document the release checklist",
                    "body": "", "head": "release-checklist", "head_sha": D17,
                    "created_at": ago(days=5), "updated_at": ago(days=4),
                    "files": docs_files,
                    "commits": [commit(D17, "tomas", "Add the release checklist", 60 * 24 * 5, docs_files, HMAIN)],
                    "diff": docs_diff,
                },
            ],
            # The handbook is built by Woodpecker, not Actions: its checks come as commit statuses.
            "statuses": {
                D17: [
                    {"context": "ci/woodpecker/pr/links", "status": "failure", "creator": "tomas",
                     "description": "2 broken links in release-checklist.md",
                     "target_url": "https://ci.norrum.example/repos/24/pipeline/218/2",
                     "created_at": ago(days=4, minutes=-3)},
                    {"context": "ci/woodpecker/pr/site", "status": "pending", "creator": "tomas",
                     "description": "Pipeline is running",
                     "target_url": "https://ci.norrum.example/repos/24/pipeline/218/1",
                     "created_at": ago(days=4, minutes=-2)},
                ],
            },
        },
        {
            "id": 26, "owner": "norrum", "name": "sandbox",
            "description": "Scratch space for trying things out", "language": "Go",
            "created_at": "2023-08-14T10:00:00Z", "updated_at": ago(days=30),
            "collaborators": {"maja": "admin", "erik": "write", "noor": "write"},
        },
        {
            "id": 25, "owner": "maja", "name": "dotfiles",
            "description": "Shell and editor settings", "language": "Shell",
            "created_at": "2021-03-05T10:00:00Z", "updated_at": ago(days=9),
            "pulls": [
                {
                    "id": 9004, "number": 4, "user": "maja",
                    "title": "Switch the prompt to starship",
                    "body": "Starship shows the git state and the Go version without a plugin zoo.",
                    "head": "starship", "head_sha": DOT4,
                    "created_at": ago(days=9), "updated_at": ago(days=9),
                    "files": dot_files,
                    "commits": [commit(DOT4, "maja", "Use starship", 60 * 24 * 9, dot_files, HMAIN)],
                    "diff": dot_diff,
                },
            ],
        },
    ],
}

print(json.dumps(seed, indent=1, ensure_ascii=False))
