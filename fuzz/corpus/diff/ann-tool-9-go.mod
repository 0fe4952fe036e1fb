go.mod
diff --git a/.gitea/workflows/ci.yml b/.gitea/workflows/ci.yml
index 2a3b4c5..6d7e8f9 100644
--- a/.gitea/workflows/ci.yml
+++ b/.gitea/workflows/ci.yml
@@ -12,6 +12,6 @@ jobs:
       - uses: actions/checkout@v4
       - uses: actions/setup-go@v5
         with:
-          go-version: "1.21"
+          go-version: "1.22"
       - run: go build ./...
       - run: go test ./...
diff --git a/go.mod b/go.mod
index 0a1b2c3..4d5e6f7 100644
--- a/go.mod
+++ b/go.mod
@@ -1,3 +1,3 @@
 module git.example.org/ann/tool
 
-go 1.21
+go 1.22
