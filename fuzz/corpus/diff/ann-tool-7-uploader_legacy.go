uploader/legacy.go
diff --git a/docs/upload.md b/docs/UPLOAD.md
similarity index 91%
rename from docs/upload.md
rename to docs/UPLOAD.md
index 3b18e51..a9c1f2d 100644
--- a/docs/upload.md
+++ b/docs/UPLOAD.md
@@ -1,5 +1,5 @@
 # Uploading releases
 
-Run `tool upload` once per artifact.
+Run `tool upload` once per artifact; failed uploads are retried three times.
 
 The token needs the `write:package` scope.
diff --git a/uploader/legacy.go b/uploader/legacy.go
deleted file mode 100644
index 5d0e9a1..0000000
--- a/uploader/legacy.go
+++ /dev/null
@@ -1,6 +0,0 @@
-package uploader
-
-// LegacyUpload posts the artifact in one request without retrying.
-func LegacyUpload(c *Client, path string) error {
-	return c.post(path)
-}
diff --git a/uploader/retry.go b/uploader/retry.go
new file mode 100644
index 0000000..e69c2b4
--- /dev/null
+++ b/uploader/retry.go
@@ -0,0 +1,21 @@
+package uploader
+
+import (
+	"errors"
+	"time"
+)
+
+// ErrGaveUp is returned when every attempt failed.
+var ErrGaveUp = errors.New("upload failed after retries")
+
+// withRetry runs fn up to attempts times, doubling the pause after each failure.
+func withRetry(attempts int, pause time.Duration, fn func() error) error {
+	for i := 0; i < attempts; i++ {
+		if err := fn(); err == nil {
+			return nil
+		}
+		time.Sleep(pause)
+		pause *= 2
+	}
+	return ErrGaveUp
+}
diff --git a/uploader/upload.go b/uploader/upload.go
index 8f2c1d3..4b7e9a0 100644
--- a/uploader/upload.go
+++ b/uploader/upload.go
@@ -1,5 +1,8 @@
 package uploader
 
-import "net/http"
+import (
+	"net/http"
+	"time"
+)
 
 // Client uploads release artifacts.
@@ -8,10 +11,9 @@ type Client struct {
 	token string
 }
 
-// Upload posts one artifact.
+// Upload posts one artifact, retrying on transient failures.
 func (c *Client) Upload(path string) error {
-	if err := c.post(path); err != nil {
-		return err
-	}
-	return nil
+	return withRetry(3, time.Second, func() error {
+		return c.post(path)
+	})
 }
