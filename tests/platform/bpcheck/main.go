// bpcheck FOLDER: has Soong itself read the Android.bp files below FOLDER, as a project of an Android tree, and prints what
// it rejects. Ends with 1 when it rejects anything.
package main

import (
	"fmt"
	"os"
	"path/filepath"
	"regexp"

	"android/soong/android"
	"android/soong/cc"
	"github.com/google/blueprint/proptools"
)

// The platform's modules that ours name, with the properties that decide who may link them, and a caller elsewhere in the
// tree. The library of the contract stands for what aidl_interface makes, which this Soong does not know yet.
const platform = `
cc_defaults { name: "platform", host_supported: true, nocrt: true, stl: "none", system_shared_libs: [] }
cc_defaults { name: "vndk", defaults: ["platform"], vendor_available: true, vndk: {enabled: true} }
cc_library { name: "libbase", defaults: ["vndk"], vndk: {support_system_process: true} }
cc_library { name: "libcutils", defaults: ["vndk"], vndk: {support_system_process: true} }
cc_library { name: "libutils", defaults: ["vndk"], vndk: {support_system_process: true} }
cc_library { name: "libbinder", defaults: ["vndk"], double_loadable: true }
cc_library { name: "libtinyxml2", defaults: ["vndk"] }
cc_library { name: "libjsoncpp", defaults: ["platform"], vendor_available: true }
cc_library { name: "libbinder_ndk", defaults: ["platform"] }
llndk_library { name: "libbinder_ndk", symbol_file: "" }
cc_library { name: "liblog", defaults: ["platform"] }
llndk_library { name: "liblog", symbol_file: "" }
cc_library_static { name: "libgtest", defaults: ["platform"], vendor_available: true }
cc_library_static { name: "libgtest_main", defaults: ["platform"], vendor_available: true }
cc_library_static { name: "libgmock", defaults: ["platform"], vendor_available: true }
cc_defaults { name: "VtsHalTargetTestDefaults", defaults: ["platform"] }
cc_library_headers { name: "libbase_headers", vendor_available: true, host_supported: true }
cc_library { name: "vendor.tavro.hardware.mirx-V1-ndk", defaults: ["platform"], vendor_available: true }
cc_binary { name: "boostd", vendor: true, nocrt: true, stl: "none", system_shared_libs: [], shared_libs: ["libtavro-dov-client"] }
cc_binary { name: "boostd_system", nocrt: true, stl: "none", system_shared_libs: [], shared_libs: ["libtavro-dov-client"] }
`

// What is newer than this Soong; the properties are checked with an Android tree only.
var newer = regexp.MustCompile(`(?ms)^(package|license|aidl_interface|vintf_compatibility_matrix) \{$.*?^\}$`)

func main() {
	work, err := os.MkdirTemp("", "bpcheck")
	if err != nil {
		panic(err)
	}
	defer os.RemoveAll(work)
	files := map[string][]byte{}
	blueprints := []string{"Android.bp"}
	err = filepath.Walk(os.Args[1], func(path string, info os.FileInfo, err error) error {
		if err != nil || info.IsDir() {
			return err
		}
		relative, _ := filepath.Rel(os.Args[1], path)
		name := filepath.Join("vendor/tavro", relative)
		files[name] = nil
		if filepath.Base(path) == "Android.bp" {
			text, err := os.ReadFile(path)
			if err != nil {
				return err
			}
			files[name] = newer.ReplaceAll(text, nil)
			blueprints = append(blueprints, name)
		}
		return nil
	})
	if err != nil {
		panic(err)
	}

	config := cc.TestConfig(work, android.Android, nil, platform, files)
	config.TestProductVariables.DeviceVndkVersion = proptools.StringPtr("current")
	config.TestProductVariables.Platform_vndk_version = proptools.StringPtr("34")
	context := cc.CreateTestContext()
	context.PreArchMutators(android.RegisterVisibilityRuleChecker)
	context.PreArchMutators(android.RegisterVisibilityRuleGatherer)
	context.PostDepsMutators(android.RegisterVisibilityRuleEnforcer)
	context.Register(config)
	_, errors := context.ParseFileList(".", blueprints)
	if len(errors) == 0 {
		_, errors = context.PrepareBuildActions(config)
	}
	for _, err := range errors {
		fmt.Fprintln(os.Stderr, err)
	}
	if len(errors) > 0 {
		os.Exit(1)
	}
}
