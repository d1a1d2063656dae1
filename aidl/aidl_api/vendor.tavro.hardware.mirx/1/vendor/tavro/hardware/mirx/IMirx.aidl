///////////////////////////////////////////////////////////////////////////////
// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE.                          //
///////////////////////////////////////////////////////////////////////////////

// This file is a snapshot of an AIDL file. Do not edit it manually. There are
// two cases:
// 1). this is a frozen version file - do not edit this in any case.
// 2). this is a 'current' file. If you make a backwards compatible change to
//     the interface (from the latest frozen version), the build system will
//     prompt you to update this file with `m <name>-update-api`.
//
// You must not make a backward incompatible change to any AIDL file built
// with the aidl_interface module type with versions property set. The module
// type is used to build AIDL files in a way that they can be used across
// independently updatable components of the system. If a device is shipped
// with such a backward incompatible change, it has a high risk of breaking
// later when a module using the interface is updated, e.g., Mainline modules.

package vendor.tavro.hardware.mirx;
@VintfStability
interface IMirx {
  void init();
  int request(in vendor.tavro.hardware.mirx.MirxRequestParcel parcel);
  int release(int handle);
  vendor.tavro.hardware.mirx.MirxRequestData[] stateRequest(in vendor.tavro.hardware.mirx.MirxRequestParcel parcel);
  int listeningRegister(in vendor.tavro.hardware.mirx.MirxRequestParcel parcel, in vendor.tavro.hardware.mirx.IMirxCallback callback);
  int listeningUnregister(int handle);
  String propertyGet(String key);
  int propertySet(String key, String value);
  int thermalListeningRegister(in int[] ids, in vendor.tavro.hardware.mirx.IMirxCallback callback);
  int thermalListeningUnregister(int handle);
  void reservedOperation();
  int setRelatedSysInfo(int first, int second);
  int ruleCtl(int ruleId, int status, in vendor.tavro.hardware.mirx.MirxRequestData[] resources);
  oneway void oneWayRequest(in vendor.tavro.hardware.mirx.MirxRequestParcel parcel);
}
