package vendor.tavro.hardware.mirx;

import vendor.tavro.hardware.mirx.IMirxCallback;
import vendor.tavro.hardware.mirx.MirxRequestData;
import vendor.tavro.hardware.mirx.MirxRequestParcel;

/**
 * The resource-control service. The order of the operations is the order of their transaction codes.
 */
@VintfStability
interface IMirx {
    /** Prepares the service. */
    void init();
    /** Makes a request; returns its handle, or the request kind's own result. */
    int request(in MirxRequestParcel parcel);
    /** Withdraws what a request acquired. */
    int release(int handle);
    /** Reads state; the request kind says which. */
    MirxRequestData[] stateRequest(in MirxRequestParcel parcel);
    /** Watches the resources of the parcel's data list; returns a listening handle. */
    int listeningRegister(in MirxRequestParcel parcel, in IMirxCallback callback);
    /** Ends a listening registration. */
    int listeningUnregister(int handle);
    /** Reads a named property. */
    String propertyGet(String key);
    /** Writes a named property. */
    int propertySet(String key, String value);
    /** Watches thermal subsystems; returns a listening handle. */
    int thermalListeningRegister(in int[] ids, in IMirxCallback callback);
    /** Ends a thermal listening registration. */
    int thermalListeningUnregister(int handle);
    /** Reserved: keeps the transaction codes of the operations below in place. */
    void reservedOperation();
    /** Passes two integers of related system information. */
    int setRelatedSysInfo(int first, int second);
    /** Switches a rule, with the resources that it applies. */
    int ruleCtl(int ruleId, int status, in MirxRequestData[] resources);
    /** Makes a request without waiting for it; the parcel brings its own handle. */
    oneway void oneWayRequest(in MirxRequestParcel parcel);
}
