cmd/tool/upload.go
diff --git a/cmd/tool/upload.go b/cmd/tool/upload.go
index 3c4d5e6..7f8a9b0 100644
--- a/cmd/tool/upload.go
+++ b/cmd/tool/upload.go
@@ -20,13 +20,5 @@ func uploadCommand() *cobra.Command {
 		RunE: func(cmd *cobra.Command, args []string) error {
 			client := newClient()
-			if legacy {
-				for _, path := range args {
-					if err := uploader.LegacyUpload(client, path); err != nil {
-						return err
-					}
-				}
-				return nil
-			}
 			for _, path := range args {
 				if err := client.Upload(path); err != nil {
 					return err
