config/loader.go
diff --git a/config/loader.go b/config/loader.go
index 1c2d3e4..5f6a7b8 100644
--- a/config/loader.go
+++ b/config/loader.go
@@ -3,6 +3,10 @@ package config
 import "os"
 
 // Load reads the configuration file.
-func Load(path string) ([]byte, error) {
-	return os.ReadFile(path)
+func Load(path string) (*Config, error) {
+	raw, err := os.ReadFile(path)
+	if err != nil {
+		return nil, err
+	}
+	return parse(raw)
 }
