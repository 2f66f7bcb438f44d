import com.orvan.media.effects.pano.PanoramaModule;

/** The installed jar on a plain JVM: the class loads the installed library by its unversioned name. */
public class Consumer {
  public static void main(String[] args) {
    PanoramaModule module = new PanoramaModule();
    boolean created = module.create(640, 480, PanoramaModule.FORMAT_NV21);
    module.destroy();
    boolean refused = !new PanoramaModule().create(0, 480, PanoramaModule.FORMAT_NV21);
    System.out.println("Java consumer: " + (created && refused ? "ok" : "FAILED"));
    System.exit(created && refused ? 0 : 1);
  }
}
